#include "ProcessRun.h"

#include <QProcess>

namespace orvo
{

namespace
{

constexpr int kNoTimeOut = -1;

QString textUpToFirstZeroByte(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes.constData());
}

} // namespace

ProcessOutcome runProcess(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadWrite);
    process.waitForFinished(kNoTimeOut);

    ProcessOutcome outcome;
    outcome.err = textUpToFirstZeroByte(process.readAllStandardError());
    outcome.out = textUpToFirstZeroByte(process.readAllStandardOutput());
    // The exit code alone tells too little: it is the signal's number after a crash, and 0 when not
    // even a process could be made.
    if (process.error() == QProcess::FailedToStart)
    {
        outcome.end = ProcessOutcome::End::NotStarted;
    }
    else if (process.exitStatus() == QProcess::CrashExit)
    {
        outcome.end = ProcessOutcome::End::Crashed;
    }
    else
    {
        outcome.end = ProcessOutcome::End::Exited;
        outcome.exitCode = process.exitCode();
    }
    return outcome;
}

} // namespace orvo
