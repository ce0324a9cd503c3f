#pragma once

#include <QJsonObject>

#include <string>

namespace orvo::ctl
{

/// Colours for people; without a meaning of their own, since a serial console has none.
enum class Tone
{
    Plain,
    Good,
    Warning,
    Bad,
    Faint,
    Strong
};

/// Something that went wrong, as a person needs it.
struct Problem
{
    std::string object; ///< what it is about
    std::string cause;
    std::string remedy; ///< what to do
};

/// Where a verb speaks to: people in lines of text, or programs in JSON.
///
/// Shape:   text goes to standard output without an end; a line is written as a whole. In JSON mode
///          line() is silent and json() writes one compact object per line; outside it json() is.
/// Threads: one.
class Output
{
public:
    /// isColoured: whether tone() does anything.
    Output(bool isJson, bool isColoured);

    [[nodiscard]] bool isJson() const { return m_isJson; }

    /// False once nobody reads any more.
    bool line(const std::string& text) const;
    bool json(const QJsonObject& object) const;

    /// Standard error, in both modes; in JSON mode an object with the member "error" as well.
    void problem(const Problem& problem) const;

    [[nodiscard]] std::string tone(Tone tone, const std::string& text) const;

private:
    bool m_isJson;
    bool m_isColoured;
};

/// Whether colours are wanted here: standard output is a terminal, TERM is not "dumb" and NO_COLOR
/// is not set.
bool wantsColour();

/// Pads with blanks behind; texts that are too long stay as they are.
std::string padded(const std::string& text, std::size_t width);

/// Cut to a width, with "..." at its end where something is missing.
std::string fitted(const std::string& text, std::size_t width);

} // namespace orvo::ctl
