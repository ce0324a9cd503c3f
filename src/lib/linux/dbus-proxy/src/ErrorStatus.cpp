#include "dbus-proxy/ErrorStatus.h"

#include "ErrorMessages.h"

#include <cstdio>

namespace orvo
{

namespace
{

QString messageOf(std::int32_t code)
{
    if (const char* message = findErrorMessage(code))
    {
        return QString::fromLocal8Bit(message);
    }
    std::fprintf(stderr, "Could not find any error message mapping for 0x%x!\n",
                 static_cast<unsigned int>(code));
    // The text has no place for a number that Qt would know: clients of the device have always got
    // it with the two characters "%d", and Qt's own warning goes to standard error.
    return QStringLiteral("Unknown error for code %d").arg(code);
}

} // namespace

ErrorStatus::ErrorStatus(std::int32_t newCode) : code(newCode), message(messageOf(newCode)) {}

void ErrorStatus::setCode(std::int32_t newCode)
{
    *this = ErrorStatus(newCode);
}

void ErrorStatus::print() const
{
    if (code != 0)
    {
        std::printf("Error (%d): \"%s\"\n", code, message.toLocal8Bit().constData());
        std::fflush(stdout);
    }
}

QDBusArgument& operator<<(QDBusArgument& argument, const ErrorStatus& status)
{
    argument.beginStructure();
    argument << status.code << status.message;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ErrorStatus& status)
{
    argument.beginStructure();
    argument >> status.code >> status.message;
    argument.endStructure();
    return argument;
}

} // namespace orvo
