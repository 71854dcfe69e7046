#include "simulation/PowerOn.h"

#include <QSettings>
#include <QTest>

#include <cmath>

using namespace kora::simulation;

/// The settings file for training shows what the installation holds when it is switched on.
class TrainingSettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void geometryAgrees()
    {
        for (const char* group : {"BPM1/", "BPM2/"}) {
            QCOMPARE(number(group, "Orient"), double(powerOn::orientation));
            QCOMPARE(number(group, "Scale_X"), powerOn::scale);
            QCOMPARE(number(group, "Scale_Y"), powerOn::scale);
            QCOMPARE(number(group, "Offset_X"), 0.0);
            QCOMPARE(number(group, "Offset_Y"), 0.0);
            QCOMPARE(number(group, "Top"), 0.0);
            QCOMPARE(number(group, "Right"), 1.0);
            QCOMPARE(number(group, "Bottom"), 2.0);
            QCOMPARE(number(group, "Left"), 3.0);
        }
    }

    void limitsAgree()
    {
        for (const char* group : {"ROCandROI/", "ROCandROI2/"}) {
            QCOMPARE(number(group, "RoiX"), powerOn::regionOfInterest);
            QCOMPARE(number(group, "RoiY"), powerOn::regionOfInterest);
            QCOMPARE(number(group, "Roc"), 100 * powerOn::regionOfConfidence);
            QCOMPARE(number(group, "BeamOffTh"), 1e6 * powerOn::beamOffAmps);
        }
        QVERIFY(value("ROCandROI/", "RocXenable").toBool());
        QVERIFY(value("ROCandROI/", "BeamOffEnable").toBool());
        QVERIFY(!value("ROCandROI2/", "RocYenable").toBool());
    }

    void loopsAgree_data()
    {
        QTest::addColumn<QByteArray>("suffix");
        QTest::addColumn<int>("loop");
        const char* const suffixes[] = {"Xlf", "Xhf", "Ylf", "Yhf"};
        for (int loop = 0; loop < 4; ++loop)
            QTest::newRow(suffixes[loop]) << QByteArray(suffixes[loop]) << loop;
    }

    void loopsAgree()
    {
        QFETCH(QByteArray, suffix);
        QFETCH(int, loop);
        const QByteArray group = "PID_" + suffix + '/';
        const PidGains& gains = loop % 2 == 1 ? powerOn::highFrequencyGains : powerOn::lowFrequencyGains;
        QCOMPARE(number(group, "Freq"), powerOn::loopFrequency);
        QCOMPARE(number(group, "Kp"), gains.kp);
        QCOMPARE(number(group, "Ki"), gains.ki);
        QCOMPARE(number(group, "Kd"), gains.kd);
        QCOMPARE(number(group, "emin"), gains.emin);
        QCOMPARE(number(group, "Imax"), gains.imax);
        QCOMPARE(number(group, "Omin"), gains.omin);
        QCOMPARE(number(group, "Omax"), gains.omax);
        QCOMPARE(number(group, "Ogain"), gains.ogain);
        QCOMPARE(number(group, "Offset"), powerOn::restVolts);
        QCOMPARE(number("Beamline/", "DAC_pos" + suffix), double(loop));
        // What a field of five decimals cannot hold would reach the loop as something else.
        for (const double gain : {gains.kp, gains.ki, gains.kd})
            QCOMPARE(std::round(gain * 1e5) / 1e5, gain);
    }

    void lowerLimitOfYlfIsFoundWhereItIsRead()
    {
        QCOMPARE(number("PID_Ylhf/", "Omin"), powerOn::lowFrequencyGains.omin);
    }

    void filtersAgree()
    {
        for (const QByteArray& axis : {QByteArray("X"), QByteArray("Y")}) {
            // "Full-band", since the low-pass is out of the path at power-on.
            QCOMPARE(number("PositionFilters/", axis + "lfFilter"), 1.0);
            QCOMPARE(number("PositionFilters/", axis + "lfFcutLow"), 10.0);
            QCOMPARE(number("PositionFilters/", axis + "hfFilter"), 0.0);
            QCOMPARE(number("PositionFilters/", axis + "hfFcutLow"), 10.0);
            QCOMPARE(number("PositionFilters/", axis + "hfFcutHigh"), 100.0);
        }
    }

private:
    QVariant value(const QByteArray& group, const QByteArray& key)
    {
        const QVariant found = settings.value(QString::fromLatin1(group + key));
        if (!found.isValid())
            qWarning("%s%s is missing", group.constData(), key.constData());
        return found;
    }
    double number(const QByteArray& group, const QByteArray& key)
    {
        const QVariant found = value(group, key);
        return found.isValid() ? found.toDouble() : std::nan("");
    }

    QSettings settings{QStringLiteral(KORA_TRAINING_SETTINGS), QSettings::IniFormat};
};

QTEST_APPLESS_MAIN(TrainingSettingsTest)
#include "TrainingSettingsTest.moc"
