// What another client of the bus sends to the supervisor: calls of its methods with any arguments,
// of any other method, interface or object, and signals. The whole supervision stands behind, on a
// developer's device, with services that answer their pings.
//
// Shape: "call", "signal" or "burst" (the same call several times before its first answer is
//        taken), path, interface ("-": none), member and signature in the first line, then the
//        values.

#include "FuzzTarget.h"

#include "Claim.h"
#include "LoggedDevice.h"

#include "bus/AnyValues.h"
#include "bus/BusMessage.h"
#include "bus/InputReader.h"
#include "bus/OwnBus.h"
#include "bus/Signature.h"

#include "DbusCmd.h"
#include "ProcessTables.h"
#include "SupervisionContext.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"
#include "SuprState.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/CorvaneService.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorService.h"
#include "dbus-proxy/QUORLService.h"
#include "dbus-proxy/WIRLService.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace
{

using namespace orvo::fuzz;

constexpr int kUsualIntervalMs = 1000;
constexpr std::size_t kBurst = 20;

struct Method
{
    std::string arguments;
    std::string values;
    std::set<std::uint32_t> codes; ///< of the status in front
};

const std::map<std::string, Method> kMethods = {
    {"doPing", {"", "(is)s", {0}}},
    {"getServiceList", {"", "(is)as", {0}}},
    {"getServiceStatus", {"s", "(is)s", {0}}},
    {"setServicePingTimeoutOneShot", {"si", "(is)", {0, 400004}}},
    {"doStartService", {"s", "(is)", {0, 400006}}},
    {"doStopService", {"s", "(is)", {0, 400007}}},
};

BusMessage call(const std::string& member)
{
    BusMessage message;
    message.path = orvo::kBusObjectPath;
    message.interface = orvo::kWardexBusName;
    message.member = member;
    return message;
}

bool isWord(const std::string& text)
{
    const auto isPart = [](char byte)
    {
        return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
    };
    return !text.empty() && text.size() < 100 && std::all_of(text.begin(), text.end(), isPart);
}

/// Words with a separator between them: what the names of a message are made of.
bool areWords(std::string text, char separator)
{
    const std::size_t size = text.size();
    int count = 0;
    for (std::size_t end = 0; end != std::string::npos; ++count)
    {
        end = text.find(separator);
        if (!isWord(text.substr(0, end)))
        {
            return false;
        }
        text.erase(0, end == std::string::npos ? end : end + 1);
    }
    constexpr std::size_t kLongest = 255;
    return count > 1 && size <= kLongest;
}

bool isPath(const std::string& text)
{
    return text == "/" || (!text.empty() && text.front() == '/' && areWords("x" + text, '/'));
}

/// One input, taken apart; nothing when no bus would let it through.
struct Sending
{
    BusMessage message;
    std::size_t count{1};
};

std::optional<Sending> sendingOf(InputReader input)
{
    std::string line = input.line();
    const std::string kind = InputReader::word(line);
    Sending sending;
    BusMessage& message = sending.message;
    message.type = kind == "signal" ? BusMessage::Signal : BusMessage::Call;
    sending.count = kind == "burst" ? kBurst : 1;
    message.path = InputReader::word(line);
    message.interface = InputReader::word(line);
    message.member = InputReader::word(line);
    const bool isWithout = message.interface == "-" && message.type == BusMessage::Call;
    const bool hasNames = isPath(message.path) && isWord(message.member) &&
                          (isWithout || areWords(message.interface, '.'));
    if (isWithout)
    {
        message.interface.clear();
    }
    if (!hasNames || !typesOf(line))
    {
        return std::nullopt;
    }
    message.signature = line;
    WireWriter body;
    AnyValues(input, body).put(line);
    message.body = body.bytes();
    return sending;
}

/// The services of the device: each answers that it is up.
std::optional<BusMessage> serviceAnswer(const BusMessage& ping)
{
    BusMessage reply;
    reply.type = BusMessage::Reply;
    if (ping.member == "doPing")
    {
        WireWriter body;
        body.number(0, 4);
        body.text("");
        body.text("up");
        reply.signature = "(is)s";
        reply.body = body.bytes();
    }
    return reply;
}

class Supervisor
{
public:
    Supervisor()
    {
        m_bus.onAnswer([] { QAbstractEventDispatcher::instance(qApp->thread())->wakeUp(); });
    }

    void judge(const Sending& sending)
    {
        std::vector<std::uint32_t> serials(sending.count);
        for (std::uint32_t& serial : serials)
        {
            serial = m_bus.send(sending.message);
        }
        if (sending.message.type == BusMessage::Call)
        {
            for (const std::uint32_t serial : serials)
            {
                judgeAnswer(sending.message, answerTo(serial));
            }
        }
        const BusMessage answer = answerTo(m_bus.send(call("doPing")));
        claim(answer.signature == "(is)s" && answer.firstNumber() == 0, "it still answers");
        judgeSupervision();
    }

private:
    /// The supervisor's event loop runs until the answer is there.
    BusMessage answerTo(std::uint32_t serial)
    {
        constexpr int kBoundMs = 20000;
        QElapsedTimer time;
        time.start();
        std::optional<BusMessage> answer = m_bus.takeAnswer(serial);
        while (!answer)
        {
            claim(time.elapsed() < kBoundMs, "every call is answered");
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            answer = m_bus.takeAnswer(serial);
        }
        return *answer;
    }

    static void judgeAnswer(const BusMessage& message, const BusMessage& answer)
    {
        const auto method = kMethods.find(message.member);
        const bool isOurs = message.path == "/" && method != kMethods.end() &&
                            message.interface == orvo::kWardexBusName &&
                            message.signature == method->second.arguments;
        if (isOurs)
        {
            claim(answer.type == BusMessage::Reply, "a method answers");
            claim(answer.signature == method->second.values, "with its values");
            claim(method->second.codes.count(answer.firstNumber()) == 1, "and one of its codes");
        }
    }

    /// Nothing that anybody sends may end the pings of a service.
    static void judgeSupervision()
    {
        for (const char* name : {orvo::kVistorBusName, orvo::kPictorBusName})
        {
            const auto active = orvo::g_activeStates.find(QString::fromLatin1(name));
            claim(active != orvo::g_activeStates.end(), "a service keeps its state");
            const auto* timer = active->second->findChild<QTimer*>();
            // A timer that could not be started calls itself active.
            claim(timer != nullptr && timer->remainingTime() >= 0, "a service is pinged");
            (void)orvo::SuprSM::restartTimer(active->first, kUsualIntervalMs);
        }
    }

    static void addServices()
    {
        using orvo::ServiceInfo;
        const QString script = QStringLiteral("/opt/orvo/etc/init.d/none");
        ServiceInfo::addService(
            QLatin1String(orvo::kVistorBusName),
            ServiceInfo::makeService<orvo::CorvaneService>(QStringLiteral("corvane"), script));
        ServiceInfo::addService(
            QLatin1String(orvo::kPictorBusName),
            ServiceInfo::makeService<orvo::PictorService>(QStringLiteral("pictor"), script));
        ServiceInfo::addService(
            QLatin1String(orvo::kWirlBusName),
            ServiceInfo::makeService<orvo::WIRLService>(QStringLiteral("wirl"), script));
        ServiceInfo::addService(
            QLatin1String(orvo::kQuorlBusName),
            ServiceInfo::makeService<orvo::QUORLService>(QStringLiteral("quorl"), script));
        orvo::registerDbusTypes();
    }

    OwnBus m_bus{serviceAnswer};
    int m_argc{0};
    QCoreApplication m_application{m_argc, nullptr};
    orvo::test::LoggedDevice m_device;
    orvo::Logger::RedisLogger m_logger{"wardex", orvo::Logger::kLogSocket, orvo::Logger::kLogList,
                                       true};
    const bool m_hasServices{(addServices(), true)};
    orvo::ServiceInfo m_info{&m_logger, true};
    orvo::DbusCmd m_command{&m_info, &m_logger};
    orvo::ServiceAction m_action{&m_info, &m_logger};
    const orvo::SupervisionContext m_context{&m_command, &m_info, &m_action, &m_logger};
    orvo::SuprSMSystem m_system{&m_context};
    orvo::SuprSM m_vistor{&m_context, &m_system, QLatin1String(orvo::kVistorBusName)};
    orvo::SuprSM m_pictor{&m_context, &m_system, QLatin1String(orvo::kPictorBusName)};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Never destroyed: QtDBus has threads of its own that outlive main.
    static auto* supervisor = new Supervisor;
    if (const auto sending = sendingOf(InputReader(data, size)))
    {
        supervisor->judge(*sending);
    }
    return 0;
}
