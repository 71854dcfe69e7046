#pragma once

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/BPM.h"
#include "feedback/WindowBeamlineConf.h"
#include "hardware/MailboxComm.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/SvgPicture.h"
#include "support/World.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <memory>

/// Writes the settings of one monitor to the settings file.
inline void storeMonitor(const char* group, int orientation, double scale, double offset, std::array<int, 4> channels)
{
    const auto store = [group](const char* key, const QVariant& value) {
        scratch_settings::setValue(QByteArray(group).append('/').append(key).constData(), value);
    };
    store("Orient", orientation);
    store("Scale_X", scale);
    store("Scale_Y", scale + 1);
    store("Offset_X", offset);
    store("Offset_Y", offset + 1);
    const char* const keys[4] = {"Top", "Right", "Bottom", "Left"};
    for (std::size_t i = 0; i < 4; ++i)
        store(keys[i], channels[i]);
}

/// The window on the double, with both monitors, anew for every test.
class BeamlineWindow : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowBeamlineConf> window;

    void makeWindow(int mask)
    {
        mailbox->nrIonBars = mask;
        window = std::make_unique<WindowBeamlineConf>(nullptr);
        koralink_double::clearCalls();
    }
    void showAtLevel(int level)
    {
        userLevel = level;
        window->showAndRefresh();
    }
    BPM* panel(int bpm) { return operate::find<BPM>(window.get(), bpm == 0 ? "boxBPM1" : "boxBPM2"); }
    QDoubleSpinBox* box(int bpm, const char* name) { return operate::find<QDoubleSpinBox>(panel(bpm), name); }
    QComboBox* combo(int bpm, const char* name) { return operate::find<QComboBox>(panel(bpm), name); }
    QSpinBox* counts(int bpm, const char* name) { return operate::find<QSpinBox>(panel(bpm), name); }
    bool isShown(int bpm, const char* name) { return !operate::find<QWidget>(panel(bpm), name)->isHidden(); }
    void press(const char* text)
    {
        operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), QString::fromLatin1(text));
    }
    void pressPanel(int bpm, const char* name) { operate::press(operate::find<QPushButton>(panel(bpm), name)); }
    QString text(int bpm, const char* name) { return operate::find<QLineEdit>(panel(bpm), name)->text(); }
    QString status(int bpm) { return operate::find<QLabel>(panel(bpm), "statusLabel")->text(); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        swVersionText = QStringLiteral("1.0.03");
        makeWindow(3);
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }
};
