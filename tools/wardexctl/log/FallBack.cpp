#include "log/FallBack.h"

#include "doctor/DoctorPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <csignal>

namespace orvo::ctl
{

namespace
{

constexpr char kVerb[] = "loglevel";
constexpr char kAfter[] = "--after";
constexpr char kFallsBack[] = "--falls-back";

/// The words of a process, its own name first.
QList<QByteArray> wordsOf(const QString& process)
{
    QFile file(QLatin1String(kProcessFolder) + "/" + process + "/cmdline");
    return file.open(QIODevice::ReadOnly) ? file.readAll().split('\0') : QList<QByteArray>();
}

QString programOf(const QString& process)
{
    return QFileInfo(QLatin1String(kProcessFolder) + "/" + process + "/exe").symLinkTarget();
}

} // namespace

pid_t leaveFallBack(const std::string& source, const std::string& levels, const std::string& span)
{
    qint64 pid = 0;
    QProcess fallBack;
    fallBack.setProgram(QCoreApplication::applicationFilePath());
    fallBack.setArguments({QLatin1String(kVerb), QString::fromStdString(source),
                           QString::fromStdString(levels), QLatin1String(kAfter),
                           QString::fromStdString(span), QLatin1String(kFallsBack)});
    // It must not keep the terminal, or who reads our output.
    fallBack.setStandardInputFile(QProcess::nullDevice());
    fallBack.setStandardOutputFile(QProcess::nullDevice());
    fallBack.setStandardErrorFile(QProcess::nullDevice());
    return fallBack.startDetached(&pid) ? static_cast<pid_t>(pid) : 0;
}

std::vector<FallBack> waitingFallBacks(const std::string& source)
{
    std::vector<FallBack> found;
    const QString own = programOf(QStringLiteral("self"));
    for (const QString& process : QDir(QLatin1String(kProcessFolder)).entryList(QDir::Dirs))
    {
        bool isProcess = false;
        const int number = process.toInt(&isProcess);
        const QList<QByteArray> words = isProcess ? wordsOf(process) : QList<QByteArray>();
        // As leaveFallBack() gives them.
        constexpr int kWords = 7;
        if (words.size() >= kWords && words[1] == kVerb && words[2] == source.c_str() &&
            words[4] == kAfter && words[6] == kFallsBack && programOf(process) == own)
        {
            found.push_back({number, words[3].toStdString()});
        }
    }
    return found;
}

void callOff(const std::vector<FallBack>& fallBacks)
{
    for (const FallBack& fallBack : fallBacks)
    {
        // SIGTERM asks it to fall back at once.
        (void)::kill(fallBack.process, SIGKILL);
    }
}

} // namespace orvo::ctl
