// What a service answers to doPing, pinged by one of the supervisor's own service objects: a reply
// of any values, an error, or either with a signal before it.
//
// Shape: "reply SIGNATURE", "error NAME" or "signal SIGNATURE" in the first line, then the values.
//        A signal comes before a good reply: NameOwnerChanged, as if it were the bus's, but sent by
//        another client, as the bus allows.

#include "FuzzTarget.h"

#include "Claim.h"

#include "bus/AnyValues.h"
#include "bus/BusMessage.h"
#include "bus/InputReader.h"
#include "bus/OwnBus.h"
#include "bus/Signature.h"

#include "dbus-proxy/CorvaneService.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorService.h"
#include "dbus-proxy/WIRLService.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <iterator>
#include <mutex>
#include <optional>
#include <string>

namespace
{

using namespace orvo::fuzz;

constexpr char kUntouched[] = "as it was";

/// What the services answer next, and what the supervisor may make of it.
struct Answer
{
    BusMessage reply;
    std::optional<BusMessage> before;
    bool isAlive{false};
    std::optional<QString> level; ///< nothing: whatever is no text of its own
};

BusMessage goodReply()
{
    WireWriter body;
    body.number(0, 4);
    body.text("");
    body.text("up");
    BusMessage reply;
    reply.type = BusMessage::Reply;
    reply.signature = "(is)s";
    reply.body = body.bytes();
    return reply;
}

/// The text that stands behind a status in a body of "(is)s".
QString levelIn(const std::string& body)
{
    InputReader reader(body);
    const auto skipText = [&reader](std::size_t& at)
    {
        const auto length = static_cast<std::size_t>(reader.number(4));
        at += 4 + length + 1;
        return reader.bytes(length + 1);
    };
    std::size_t at = 4;
    (void)reader.number(4);
    skipText(at);
    (void)reader.bytes((4 - at % 4) % 4);
    std::string level = skipText(at);
    level.pop_back();
    return QString::fromStdString(level);
}

std::optional<Answer> answerOf(InputReader input)
{
    std::string line = input.line();
    const std::string kind = InputReader::word(line);
    const auto types = typesOf(kind == "error" ? "" : line);
    if (!types)
    {
        return std::nullopt;
    }
    WireWriter body;
    AnyValues(input, body).put(line);
    Answer answer;
    if (kind == "error")
    {
        answer.reply.type = BusMessage::Error;
        answer.reply.errorName =
            line == "no-reply" ? "org.freedesktop.DBus.Error.NoReply" : "com.orvo.pictor.Error";
        answer.level = kUntouched;
        return answer;
    }
    if (kind == "signal")
    {
        answer.reply = goodReply();
        answer.before = BusMessage{BusMessage::Signal,
                                   0,
                                   0,
                                   "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus",
                                   "NameOwnerChanged",
                                   "",
                                   "",
                                   "",
                                   line,
                                   body.bytes()};
        answer.isAlive = true;
        answer.level = QStringLiteral("up");
        return answer;
    }
    answer.reply.type = BusMessage::Reply;
    answer.reply.signature = line;
    answer.reply.body = body.bytes();
    answer.isAlive = !types->empty() && types->front() == "(is)";
    if (types->size() != 2)
    {
        answer.level = kUntouched;
    }
    else if (line == "(is)s")
    {
        answer.level = levelIn(answer.reply.body);
    }
    return answer;
}

/// The supervisor's side, and the services' behind the bus.
class Pings
{
public:
    Pings() { orvo::registerDbusTypes(); }

    /// Pings one of the services; all of them would be done by the same code, at thrice the time.
    void judge(const Answer& answer, std::size_t which)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_answer = answer;
        }
        orvo::ServiceInfo::Service* const services[] = {&m_corvane, &m_pictor, &m_wirl};
        ping(*services[which % std::size(services)], answer);
        QCoreApplication::processEvents();
    }

private:
    static void ping(orvo::ServiceInfo::Service& service, const Answer& answer)
    {
        QString level = QString::fromLatin1(kUntouched);
        QElapsedTimer time;
        time.start();
        const bool isAlive = service.isAlive(level);
        if (!isAlive && time.elapsed() >= service.pingTimeout())
        {
            // On a busy machine an answer may be late, and is none then.
            claim(level == kUntouched, "no answer leaves the level alone");
            return;
        }
        claim(isAlive == answer.isAlive, "alive by a status in front");
        claim(!answer.level || level == *answer.level, "the level is the second of two");
    }

    std::optional<BusMessage> answered(const BusMessage& call)
    {
        if (call.member != "doPing")
        {
            return BusMessage{BusMessage::Reply, 0, 0, "", "", "", "", "", "", "", ""};
        }
        std::optional<BusMessage> before;
        BusMessage reply;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            before = m_answer.before;
            reply = m_answer.reply;
        }
        if (before)
        {
            m_bus.send(*before);
        }
        return reply;
    }

    std::mutex m_mutex;
    Answer m_answer;
    OwnBus m_bus{[this](const BusMessage& call)
                 {
                     return answered(call);
                 }};
    int m_argc{0};
    QCoreApplication m_application{m_argc, nullptr};
    orvo::CorvaneService m_corvane{QStringLiteral("corvane"), QStringLiteral("none")};
    orvo::PictorService m_pictor{QStringLiteral("pictor"), QStringLiteral("none")};
    orvo::WIRLService m_wirl{QStringLiteral("wirl"), QStringLiteral("none")};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Never destroyed: QtDBus has threads of its own that outlive main.
    static auto* pings = new Pings;
    if (const auto answer = answerOf(InputReader(data, size)))
    {
        pings->judge(*answer, size);
    }
    return 0;
}
