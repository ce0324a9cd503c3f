#include "output/PictureFile.h"

#include <QFile>
#include <QSaveFile>

namespace orvo::ctl
{

std::optional<PictureKind> pictureKindOf(const std::string& path)
{
    const QString name = QFile::decodeName(path.c_str());
    if (name.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive))
    {
        return PictureKind::Svg;
    }
    if (name.endsWith(QLatin1String(".html"), Qt::CaseInsensitive))
    {
        return PictureKind::Html;
    }
    return std::nullopt;
}

std::optional<Problem> replaceFile(const std::string& path, const QByteArray& bytes)
{
    QSaveFile file(QFile::decodeName(path.c_str()));
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
    {
        return std::nullopt;
    }
    return Problem{path, "cannot be written (" + file.errorString().toStdString() + ")",
                   "Name a file in a folder that exists, may be written and has room, such as "
                   "timeline.svg in your home folder."};
}

} // namespace orvo::ctl
