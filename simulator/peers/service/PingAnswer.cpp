#include "service/PingAnswer.h"

#include "common/Diagnostics.h"
#include "common/Numbers.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <map>

namespace orvo::simulator
{

namespace
{
constexpr int kHugeRunLevelBytes = 1024 * 1024;
constexpr int kGiantRunLevelBytes = 10 * 1024 * 1024;
constexpr int kNumberForRunLevel = 5;

QString up()
{
    return QStringLiteral("up");
}

// Marshalled by hand: the supervisor's own type code must not be checked against itself.
QVariant successStatus()
{
    QDBusArgument status;
    status.beginStructure();
    status << 0 << QString();
    status.endStructure();
    return QVariant::fromValue(status);
}

QVariant inStructure(const QString& text)
{
    QDBusArgument structure;
    structure.beginStructure();
    structure << text;
    structure.endStructure();
    return QVariant::fromValue(structure);
}

PingAnswer reply(const QVariantList& values)
{
    PingAnswer answer;
    answer.values = values;
    return answer;
}

PingAnswer level(const std::string& runLevel)
{
    return reply({successStatus(), QString::fromStdString(runLevel)});
}

PingAnswer refusal(const std::string& text)
{
    PingAnswer answer;
    answer.kind = PingAnswer::Kind::Error;
    answer.errorText = QString::fromStdString(text);
    return answer;
}

PingAnswer misunderstood(const Order& order)
{
    std::string line = order.word;
    for (const std::string& argument : order.arguments)
    {
        line += " " + argument;
    }
    const std::string text =
        "unknown order '" + line +
        "'; give one of: up, starting, down, delay MS [LEVEL], error, hang, crash, "
        "garbage [none|one|three|int|variant|swap|struct|huge|giant]";
    complain(text);
    return refusal(text);
}

PingAnswer delayed(const Order& order)
{
    const std::optional<int> delay = parseMilliseconds(order.argument(0, ""));
    if (!delay)
    {
        return misunderstood(order);
    }
    PingAnswer answer = level(order.argument(1, "up"));
    answer.delayMs = *delay;
    return answer;
}

PingAnswer garbage(const Order& order)
{
    const std::map<std::string, QVariantList> forms = {
        {"none", {}},
        {"one", {successStatus()}},
        {"three", {successStatus(), up(), QStringLiteral("more")}},
        {"int", {successStatus(), kNumberForRunLevel}},
        {"variant", {successStatus(), QVariant::fromValue(QDBusVariant(up()))}},
        {"swap", {up(), successStatus()}},
        {"struct", {successStatus(), inStructure(up())}},
        {"huge", {successStatus(), QString(kHugeRunLevelBytes, QLatin1Char('u'))}},
        {"giant", {successStatus(), QString(kGiantRunLevelBytes, QLatin1Char('u'))}},
    };
    const auto form = forms.find(order.argument(0, "none"));
    return form == forms.end() ? misunderstood(order) : reply(form->second);
}
} // namespace

PingAnswer PingAnswer::to(const Order& order)
{
    PingAnswer answer;
    if (order.word == "up" || order.word == "starting" || order.word == "down")
    {
        return level(order.word);
    }
    if (order.word == "delay")
    {
        return delayed(order);
    }
    if (order.word == "error")
    {
        return refusal("ordered to fail");
    }
    if (order.word == "garbage")
    {
        return garbage(order);
    }
    if (order.word == "hang")
    {
        answer.kind = Kind::Silence;
        return answer;
    }
    if (order.word == "crash")
    {
        answer.kind = Kind::Crash;
        return answer;
    }
    return misunderstood(order);
}

} // namespace orvo::simulator
