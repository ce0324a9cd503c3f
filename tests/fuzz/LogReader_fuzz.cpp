// Records as others wrote them, one per line, and all that the operator's command makes of them:
// lines of the log, status, the reasons of a restart, timelines. The first line says by how much
// the terminal is wider than the least, the present time and the words of a query.
//
// Shape: "WIDTH NOW LEVEL SOURCE SINCE REGEX"; a line that begins with '{' is a record as it is,
//        any other one is "SECONDS LEVEL MESSAGE" of the supervisor.

#include "FuzzTarget.h"

#include "Claim.h"

#include "bus/InputReader.h"

#include "log-reading/OverlapFilter.h"
#include "log-reading/ReadRecord.h"
#include "log/LogQuery.h"
#include "log/RecordText.h"
#include "model/DeviceModel.h"
#include "model/Outlook.h"
#include "model/Timeline.h"
#include "model/WhyChain.h"
#include "timeline/TimelineJson.h"
#include "timeline/TimelinePicture.h"
#include "timeline/TimelineText.h"
#include "verbs/StatusView.h"

#include <QJsonDocument>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace orvo::ctl;
using orvo::ReadRecord;
using orvo::fuzz::claim;
using orvo::fuzz::InputReader;

constexpr std::size_t kMostRecords = 200;
constexpr std::size_t kScreenWidth = 79;
constexpr std::size_t kScreenHeight = 24;
/// Of a device, in seconds: its own clock tells the present, and nobody else.
constexpr long kLongestLife = 1000000000;
/// Of a terminal; one that says less is not believed.
constexpr std::size_t kLeastWidth = 40;
constexpr char kServices[][16] = {"", "com.orvo.vistor", "com.orvo.pictor"};

/// The word that stands first; 0 when it is no number.
long numberIn(std::string& words)
{
    constexpr int kDecimal = 10;
    return std::strtol(InputReader::word(words).c_str(), nullptr, kDecimal);
}

std::string recordOf(std::string line)
{
    if (!line.empty() && line.front() == '{')
    {
        return line;
    }
    const std::string seconds = InputReader::word(line);
    const std::string level = InputReader::word(line);
    return R"({"T":")" + seconds + R"(", "P":"321", "C":")" + level + R"(", "S":"wardex", "M":")" +
           line + R"("})";
}

/// The characters of a text that is UTF-8; no byte of it is for the terminal itself.
std::size_t charactersOf(const std::string& text)
{
    for (const char byte : text)
    {
        const auto value = static_cast<unsigned char>(byte);
        claim(value >= ' ' && value != 0x7f, "nothing that a terminal would obey");
    }
    const QString characters = QString::fromUtf8(text.c_str());
    claim(!characters.contains(QChar::ReplacementCharacter), "well-formed text");
    return static_cast<std::size_t>(characters.size());
}

void judgeRecord(const ReadRecord& record, const DeviceClock& clock)
{
    const Output plain(false, false);
    charactersOf(recordText(plain, record, clock));
    charactersOf(shortRecordText(record, clock));
    charactersOf(
        QJsonDocument(recordJson(record, clock)).toJson(QJsonDocument::Compact).toStdString());
    claim(!record.isRecord || record.time >= 0, "a record has a time");
}

void judgeQuery(const LogWords& words, const std::vector<ReadRecord>& records,
                const DeviceClock& clock)
{
    std::string complaint;
    const auto query = LogQuery::of(words, clock.monotonic, clock.wallMs, complaint);
    claim(query.has_value() == complaint.empty(), "a query or a complaint");
    if (query)
    {
        const auto condition = query->serverFilter().condition();
        claim(!condition || condition->find('\0') == std::string::npos, "a condition is one text");
        (void)std::count_if(records.begin(), records.end(),
                            [&](const ReadRecord& record) { return query->passes(record); });
    }
}

void judgeStatus(const std::vector<ReadRecord>& records, const DeviceClock& clock)
{
    DeviceModel model;
    for (const ReadRecord& record : records)
    {
        model.add(record);
    }
    StatusView view;
    view.facts = model.facts();
    view.clock = clock;
    const std::size_t last = std::min<std::size_t>(records.size(), 10);
    view.records.assign(records.end() - static_cast<std::ptrdiff_t>(last), records.end());
    for (const bool answers : {true, false})
    {
        view.overview.answer.kind = answers ? BusAnswer::Kind::Answered : view.overview.answer.kind;
        const auto lines = statusLines(Output(false, false), view);
        claim(lines.size() <= kScreenHeight, "status is one screen");
        for (const std::string& line : lines)
        {
            claim(charactersOf(line) <= kScreenWidth, "status fits the screen");
        }
        (void)QJsonDocument(statusJson(view)).toJson();
    }
}

void judgeWhy(const std::vector<ReadRecord>& records)
{
    for (const char* service : kServices)
    {
        for (const WhyStep& step : whyChain(records, service).steps)
        {
            charactersOf(step.what + step.rule);
            claim(step.times > 0, "a step happened");
        }
    }
}

void judgeLanes(const Timeline& timeline)
{
    claim(!timeline.lanes.empty() && timeline.begin <= timeline.end, "there is a device");
    for (const TimelineLane& lane : timeline.lanes)
    {
        claim(!lane.spans.empty() && lane.spans.front().begin == timeline.begin &&
                  lane.spans.back().end == timeline.end,
              "a lane spans all");
        for (std::size_t at = 1; at < lane.spans.size(); ++at)
        {
            claim(lane.spans[at].begin == lane.spans[at - 1].end, "without a gap");
        }
    }
}

void judgeTimeline(const std::vector<ReadRecord>& records, const TimelineView& form,
                   std::size_t width)
{
    TimelineView view = form;
    view.timeline = timelineOf(records, {std::nullopt, form.clock.monotonic, true, false});
    judgeLanes(view.timeline);
    for (const bool isUtf8 : {true, false})
    {
        for (const std::string& line :
             timelineLines(Output(false, false), view, Terminal{width, isUtf8}))
        {
            claim(charactersOf(line) <= width, "no line is too wide");
        }
    }
    QXmlStreamReader xml(timelineSvg(view));
    while (!xml.atEnd())
    {
        (void)xml.readNext();
    }
    claim(!xml.hasError(), "a picture is well-formed");
    (void)timelineHtml(view);
    (void)QJsonDocument(timelineJson(view)).toJson();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    // No thread runs yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    setenv("TZ", "UTC", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputReader input(data, size);
    std::string words = input.line();
    const std::size_t width = kLeastWidth + (static_cast<std::size_t>(numberIn(words)) & 255U);
    const auto now = static_cast<double>(numberIn(words) % kLongestLife);
    LogWords query;
    query.level = InputReader::word(words);
    query.source = InputReader::word(words);
    query.since = InputReader::word(words);
    query.regex = words;

    TimelineView view;
    view.clock = {std::max(0.0, now), 1795239526000};
    std::vector<ReadRecord> records;
    std::vector<std::string> raws;
    for (std::string line = input.line(); !line.empty() && records.size() < kMostRecords;
         line = input.line())
    {
        raws.push_back(recordOf(line));
        records.push_back(orvo::readRecord(raws.back()));
        judgeRecord(records.back(), view.clock);
    }
    orvo::OverlapFilter overlap(raws);
    claim(std::none_of(raws.begin(), raws.end(),
                       [&](const std::string& raw) { return overlap.isNew(raw); }),
          "what is stored is not new");
    judgeQuery(query, records, view.clock);
    judgeStatus(records, view.clock);
    judgeWhy(records);
    judgeTimeline(records, view, width);
    return 0;
}
