#include "SimulatedService.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/CorvaneProxy.h"
#include "dbus-proxy/PictorProxy.h"
#include "dbus-proxy/WirlProxy.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QMetaMethod>
#include <QStringList>

namespace orvo
{

namespace
{

/// The names of what a proxy itself adds, each once, in alphabetical order.
QStringList membersOf(const QMetaObject& proxy, QMetaMethod::MethodType type)
{
    QStringList names;
    for (int i = proxy.methodOffset(); i < proxy.methodCount(); ++i)
    {
        if (proxy.method(i).methodType() == type)
        {
            names << QString::fromLatin1(proxy.method(i).name());
        }
    }
    names.removeDuplicates();
    names.sort();
    return names;
}

QStringList words(const char* text)
{
    QStringList names = QString::fromLatin1(text).split(QLatin1Char(' '));
    names.sort();
    return names;
}

template <typename Proxy>
void expectPingBothWays(const char* busName)
{
    const QString name = QLatin1String(busName);
    test::SimulatedService service(name);
    service.answers(QStringLiteral("starting"));
    Proxy proxy(name, QLatin1String(kBusObjectPath), QDBusConnection::systemBus());
    EXPECT_STREQ(busName, Proxy::staticInterfaceName());

    QString runLevel;
    const QDBusReply<ErrorStatus> blocking = proxy.doPing(runLevel);
    EXPECT_TRUE(blocking.isValid());
    EXPECT_EQ(0, blocking.value().code);
    EXPECT_EQ(QStringLiteral("starting"), runLevel);

    QDBusPendingReply<ErrorStatus, QString> pending = proxy.doPing();
    pending.waitForFinished();
    EXPECT_EQ(0, pending.argumentAt<0>().code);
    EXPECT_EQ(QStringLiteral("starting"), pending.argumentAt<1>());
    EXPECT_EQ(2, service.pings());
}

} // namespace

TEST(CorvaneProxy, HasEveryMethodOfItsServiceAndNoOther)
{
    EXPECT_EQ(
        words("doPing getActiveDataConnections getAllParameters getApplicationList "
              "getApplicationStatisticData getClientCompatibilityList getHWInfo getParameter "
              "getSWVersion getServiceReportData getServiceReportFailedSlots "
              "getServiceReportPassedSlots getTraceLogs ioSwitchApplication ioTeachFirstModel "
              "reboot requestSession startServiceReportReadOut stopServiceReportReadOut "
              "switchApplication systemCommand"),
        membersOf(CorvaneProxy::staticMetaObject, QMetaMethod::Slot));
}

TEST(CorvaneProxy, PingsItsServiceBlockingAndNot)
{
    expectPingBothWays<CorvaneProxy>(kVistorBusName);
}

TEST(PictorProxy, HasEveryMethodOfItsServiceAndNoOther)
{
    EXPECT_EQ(
        words("applyConfiguration changeParametrizationTriggerMode doPing enableAlgo "
              "enableAlgoDebug enableIO enableLogicLayer enableModels enablePreAlgo "
              "enablePreAlgoOutput enableRawMode enableRawOutput enterEditMode enterRunMode "
              "getAlgorithmVersion getAutofocusAlgorithmVersion getExposureTimeList "
              "getFrontendTemperature getParametrizationTriggerMode "
              "getProgressCalculateAutofocus getProgressCalculateExposureTime getSerialNumber "
              "getServiceReportData getServiceReportFailedSlots getServiceReportPassedSlots "
              "getStatistics getTeachProgress isConfigurationDone listAvailableModes "
              "listModeParameters notifyConfigurationChanged pcicTrigger processSnapshot "
              "requestSnapshot reset resetStatistics resetTriggerState serializeStatistics "
              "setApplication setApplicationParameters setResultScope startCalculateAutofocus "
              "startCalculateExposureTime startServiceReportReadOut stopServiceReportReadOut "
              "teachFirstModel teachModel trigger"),
        membersOf(PictorProxy::staticMetaObject, QMetaMethod::Slot));
}

TEST(PictorProxy, PingsItsServiceBlockingAndNot)
{
    expectPingBothWays<PictorProxy>(kPictorBusName);
}

TEST(WirlProxy, HasEveryMethodOfItsServiceAndNoOther)
{
    EXPECT_EQ(
        words("dbgGetDiagCtrlRestarts dbgGetMainState dbgGetMemStats dbgGetPinVoltage "
              "dbgGetTimeSinceBoot dbgSetBoot0 dbgSetBoot1 dbgSetIOMode dbgSetOutput "
              "dbgStartLoopBackTest dbgStopLoopBackTest doForceTrigger doPing doRAWRequest "
              "doReset doTrigger getApplToSwitchTo getDacEnabled getDacThresholds getDeviceMode "
              "getDeviceType getDiagCtlBoardVariant getDiagCtlSwVersion getIODebounce getIOMode "
              "getIOPinStates getIOPolarity getIOTriggerEdge getIlluPowerStatus getIlluTemp "
              "getIsrStatus getIsrStatusBuffered getLastTriggerTimestamp getLedStatus "
              "getPinMode getPinStatus getPwmDutyCycle getSysState getTraceLogs "
              "getTriggerCounter getTriggerEnable getVoltage setAnalogOut setApplSwitchMode "
              "setDiagEvent setDiagEventsAtomic setEvaFinishedHoldTime setEvaluationFinished "
              "setIODebounce setIOMode setIOTriggerEdge setIOsNPN setIOsPNP setIlluPowerStatus "
              "setLedStatus setPinLed setPinPulseWidth setPinStatus setPwmDutyCycle setSysState "
              "setTraceLoggingEnabled"),
        membersOf(WirlProxy::staticMetaObject, QMetaMethod::Slot));
}

TEST(WirlProxy, PingsItsServiceBlockingAndNot)
{
    expectPingBothWays<WirlProxy>(kWirlBusName);
}

TEST(WirlProxy, HasTheSignalsOfItsServiceWithTheirTypes)
{
    QStringList signatures;
    const QMetaObject& proxy = WirlProxy::staticMetaObject;
    for (int i = proxy.methodOffset(); i < proxy.methodCount(); ++i)
    {
        if (proxy.method(i).methodType() == QMetaMethod::Signal)
        {
            signatures << QString::fromLatin1(proxy.method(i).methodSignature());
        }
    }
    signatures.sort();
    EXPECT_EQ(words("signalApplSwitched(int) signalDiagCAvailable(bool) "
                    "signalDiagCStatus(orvo::DiagCtlEvent) signalIlluTemp(int,int) "
                    "signalLoopBackTest(orvo::DiagCtlEvent,int) signalTrigger(int,int) "
                    "signalUserInChanged(int,int)"),
              signatures);
}

TEST(CorvaneProxy, HasNoSignals)
{
    EXPECT_EQ(QStringList(), membersOf(CorvaneProxy::staticMetaObject, QMetaMethod::Signal));
    EXPECT_EQ(QStringList(), membersOf(PictorProxy::staticMetaObject, QMetaMethod::Signal));
}

} // namespace orvo
