#pragma once

#include "output/Output.h"

#include <QByteArray>

#include <optional>
#include <string>

namespace orvo::ctl
{

/// The kinds of picture that can be written.
enum class PictureKind
{
    Svg,
    Html
};

/// By the end of a file's name; nothing for any other end.
std::optional<PictureKind> pictureKindOf(const std::string& path);

/// Puts the bytes in the place of what the file holds, at once: a reader sees the old file or the
/// new one, never a part.
///
/// Errors: answers what went wrong; the old file is as it was.
std::optional<Problem> replaceFile(const std::string& path, const QByteArray& bytes);

} // namespace orvo::ctl
