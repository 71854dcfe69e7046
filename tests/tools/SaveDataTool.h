#pragma once

#include "double/KoralinkDouble.h"
#include "support/FileContent.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowSaveData.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <memory>

constexpr const char* checkNames[17] = {
    "checkIonBarch1",   "checkIonBarch2",   "checkIonBarch3", "checkIonBarch4", "checkIonBarch1_2", "checkIonBarch2_2",
    "checkIonBarch3_2", "checkIonBarch4_2", "checkAnvoltch1", "checkAnvoltch2", "checkAnvoltch3",   "checkBPMposX",
    "checkBPMposY",     "checkBPMi0",       "checkBPMposX_2", "checkBPMposY_2", "checkBPMi0_2"};

/// Every slot of every record has a value of its own.
inline void fillDistinct(DisplayRecord* block, int count)
{
    for (int i = 0; i < count; ++i) {
        double values[slotsPerRecord];
        for (int slot = 0; slot < slotsPerRecord; ++slot)
            values[slot] = (slot + 1) * 1000.25 + i;
        std::memcpy(&block[i], values, sizeof values);
    }
}

/// Lines of a file behind its header of eight lines.
inline QList<QByteArray> dataLines(const QString& path)
{
    return contentOf(path).split('\n').mid(8);
}

/// The tool on the double, in a folder of its own, anew for every test.
class SaveDataTool : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<World> world;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<WindowSaveData> window;

    QString path(const char* name = "data.csv") const { return folder->filePath(QLatin1String(name)); }
    void usePath(const QString& text) { operate::find<QLineEdit>(window.get(), "pathLineEdit")->setText(text); }
    void useSamples(int count) { operate::find<QSpinBox>(window.get(), "nrSampBox")->setValue(count); }
    void tick(const QStringList& names)
    {
        for (const char* name : checkNames)
            operate::find<QCheckBox>(window.get(), name)->setChecked(names.contains(QLatin1String(name)));
    }
    void tickAll(bool on)
    {
        for (const char* name : checkNames)
            operate::find<QCheckBox>(window.get(), name)->setChecked(on);
    }
    void save() { operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), QStringLiteral("Save")); }
    QString status() const { return operate::find<QLabel>(window.get(), "statusLabel")->text(); }
    void compareSavedStatus(const QString& savedPath) const { compareStatus("Saved as", savedPath); }
    void compareStatus(const char* words, const QString& savedPath) const
    {
        const QRegularExpression line(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d: %1: %2$")
                                          .arg(QLatin1String(words), QRegularExpression::escape(savedPath)));
        QVERIFY2(line.match(status()).hasMatch(), qPrintable(status()));
    }

    void makeTool()
    {
        koralink_double::reset();
        koralink_double::answers().fillBlock = fillDistinct;
        world = std::make_unique<World>();
        folder = std::make_unique<QTemporaryDir>();
        window = std::make_unique<WindowSaveData>();
    }
    void releaseTool()
    {
        window.reset();
        folder.reset();
        world.reset();
        QCOMPARE(koralink_double::openDescriptors(), 0);
    }

private slots:
    void init() { makeTool(); }
    void cleanup() { releaseTool(); }
};
