#include "output/Output.h"

#include <QJsonDocument>
#include <QProcessEnvironment>

#include <cstdio>

#include <unistd.h>

namespace orvo::ctl
{

namespace
{

const char* codeOf(Tone tone)
{
    switch (tone)
    {
    case Tone::Good:
        return "32";
    case Tone::Warning:
        return "33";
    case Tone::Bad:
        return "31";
    case Tone::Faint:
        return "2";
    case Tone::Strong:
        return "1";
    case Tone::Plain:
        break;
    }
    return "0";
}

bool write(std::FILE* stream, const std::string& text)
{
    const std::string whole = text + "\n";
    return std::fwrite(whole.data(), 1, whole.size(), stream) == whole.size() &&
           std::fflush(stream) == 0;
}

} // namespace

Output::Output(bool isJson, bool isColoured) : m_isJson(isJson), m_isColoured(isColoured) {}

bool Output::line(const std::string& text) const
{
    return m_isJson || write(stdout, text);
}

bool Output::json(const QJsonObject& object) const
{
    return !m_isJson ||
           write(stdout, QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString());
}

void Output::problem(const Problem& problem) const
{
    write(stderr, "wardexctl: " + problem.object + ": " + problem.cause);
    if (!problem.remedy.empty())
    {
        write(stderr, "  " + problem.remedy);
    }
    json({{"error", QJsonObject{{"object", QString::fromStdString(problem.object)},
                                {"cause", QString::fromStdString(problem.cause)},
                                {"remedy", QString::fromStdString(problem.remedy)}}}});
}

std::string Output::tone(Tone tone, const std::string& text) const
{
    if (!m_isColoured || tone == Tone::Plain || text.empty())
    {
        return text;
    }
    return "\033[" + std::string(codeOf(tone)) + "m" + text + "\033[0m";
}

bool wantsColour()
{
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    return isatty(STDOUT_FILENO) != 0 && environment.value("NO_COLOR").isEmpty() &&
           environment.value("TERM", "dumb") != QLatin1String("dumb");
}

std::string padded(const std::string& text, std::size_t width)
{
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::string fitted(const std::string& text, std::size_t width)
{
    constexpr char kCut[] = "...";
    constexpr std::size_t kCutLength = sizeof kCut - 1;
    if (text.size() <= width)
    {
        return text;
    }
    return width < kCutLength ? text.substr(0, width) : text.substr(0, width - kCutLength) + kCut;
}

} // namespace orvo::ctl
