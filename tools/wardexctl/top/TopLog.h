#pragma once

#include "log-reading/ReadRecord.h"
#include "log/LogQuery.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// The scrolling log of the live screen: the newest records, what of them passes the filters, and
/// which part a window of some height shows.
///
/// Shape:   at most kKept records, as many as the device keeps. While following, the window ends
///          with the newest record; else it stays where it is while records come.
/// Threads: one.
class TopLog
{
public:
    static constexpr std::size_t kKept = 10000;

    TopLog();

    void add(std::vector<ReadRecord> records);

    /// False, nothing changed and complaint set for what is no regular expression.
    bool setFilter(const std::string& regex, std::string& complaint);
    /// On to the next level: all, then INFO and worse, WARN, ERROR, FATAL, EMERG, and all again.
    void nextLevel();

    // Heights and distances in lines; a negative distance goes to older records.
    void scroll(int lines, std::size_t height);
    void toOldest(std::size_t height);
    void follow() { m_bottom.reset(); }

    /// Oldest first; at most height of them. Valid until the next add().
    [[nodiscard]] std::vector<const ReadRecord*> window(std::size_t height) const;
    /// The newest ones, whatever the filters let through.
    [[nodiscard]] std::vector<ReadRecord> newest(std::size_t count) const;

    [[nodiscard]] bool isFollowing() const { return !m_bottom; }
    /// How many that pass are newer than the window.
    [[nodiscard]] std::size_t newer() const { return m_shown.size() - end(); }
    [[nodiscard]] std::size_t passing() const { return m_shown.size(); }
    [[nodiscard]] const std::deque<ReadRecord>& records() const { return m_records; }
    [[nodiscard]] const std::string& filter() const { return m_words.regex; }
    [[nodiscard]] const std::string& level() const { return m_words.level; } ///< empty: all

private:
    [[nodiscard]] std::size_t end() const;
    bool setWords(const LogWords& words, std::string& complaint);

    std::deque<ReadRecord> m_records;
    std::uint64_t m_first{0};              ///< number of the oldest record
    std::deque<std::uint64_t> m_shown;     ///< numbers of those that pass
    std::optional<std::uint64_t> m_bottom; ///< of the window; nothing while following
    LogWords m_words;
    LogQuery m_query;
};

} // namespace orvo::ctl
