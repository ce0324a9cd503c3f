#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <string>

namespace orvo::ctl
{

/// Raised when a member changes its meaning or goes; new members may come at any time.
inline constexpr int kJsonSchema = 1;

inline QJsonValue jsonText(const std::string& text)
{
    return QString::fromStdString(text);
}

/// The text, or null for an empty one.
inline QJsonValue jsonTextOrNull(const std::string& text)
{
    return text.empty() ? QJsonValue() : jsonText(text);
}

/// The beginning of a verb's only object.
inline QJsonObject jsonOf(const char* verb)
{
    return {{"schema", kJsonSchema}, {"verb", verb}};
}

} // namespace orvo::ctl
