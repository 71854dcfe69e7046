// Afternoon: what goes wrong, and how the windows tell it.

#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "tour/Chapters.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>

using operate::find;

namespace {

/// A change of the installation is polled within a second and shown within another.
constexpr double noticeSeconds = 4;
constexpr int amplifierPort = 1;
constexpr int amplifierCode = 0x2101;

/// Name of the product in a port. The window may read a port in the middle of a scan and then shows it empty
/// until its next refresh: only what stays empty is.
QString productIn(const Stage& stage, int port)
{
    constexpr int nameRow = 1;
    constexpr int looks = 3;
    constexpr double refreshSeconds = 1.1;
    const auto* table = find<QTableWidget>(stage.hand.widget("WindowSFPstatus"), "SFPsTable");
    for (int look = 0; look < looks; ++look) {
        const QTableWidgetItem* item = table->item(nameRow, port);
        if (item && !item->text().isEmpty())
            return item->text();
        stage.hand.wait(refreshSeconds);
    }
    return QStringLiteral("nothing");
}

} // namespace

void tour::loseAndRegainTheBeam(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Lose and regain the beam"));
    auto* button = find<QPushButton>(stage.hand.widget("WidgetFeedbackControl"), "buttonFdbk");
    stage.plant.setBeamOn(false);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("status without beam"), QStringLiteral("Beam OFF, purple lamp"),
                         stage.heartbeat());
    stage.findings.near(QStringLiteral("intensity without beam"), QStringLiteral("uA"), 0, 0.01,
                        stage.statistic("i0MeanLineEdit") * 1e6);
    stage.camera.take(stage.hand.mainWindow(), QStringLiteral("beam-off"));
    stage.plant.setBeamOn(true);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("status when it is back"), QStringLiteral("Feedback ON, green lamp"),
                         stage.heartbeat());

    stage.plant.kick(500, 0);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("status after a kick of 500 um"), QStringLiteral("FAULT: Out of ROC, red lamp"),
                         stage.heartbeat());
    stage.camera.take(stage.hand.widget("WidgetFeedbackControl"), QStringLiteral("fault"));
    stage.hand.press(button);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("status after Disable Feedback"), QStringLiteral("Feedback OFF, grey lamp"),
                         stage.heartbeat());
    stage.hand.press(button);
    stage.hand.wait(2 * noticeSeconds);
    stage.findings.equal(QStringLiteral("status after Enable Feedback"), QStringLiteral("Feedback ON, green lamp"),
                         stage.heartbeat());
}

void tour::unplugAndReplugAnAmplifier(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Unplug and replug an amplifier"));
    QWidget* ports = stage.open("actionSFP_info", "WindowSFPstatus");
    QDockWidget* cloud = stage.hand.dock(QStringLiteral("Graph XY 2"));
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("in port B"), QStringLiteral("Ionbar"), productIn(stage, amplifierPort));
    stage.camera.take(ports, QStringLiteral("sfp-status"));

    stage.plant.plug(amplifierPort, 0);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("in port B, unplugged"), QStringLiteral("nothing"),
                         productIn(stage, amplifierPort));
    stage.findings.holds(QStringLiteral("graphs of BPM2 hidden"), cloud->isHidden());
    stage.findings.equal(QStringLiteral("the feedback on BPM1 goes on"), QStringLiteral("Feedback ON, green lamp"),
                         stage.heartbeat());
    stage.plant.plug(amplifierPort, amplifierCode);
    stage.hand.wait(noticeSeconds);
    stage.findings.equal(QStringLiteral("in port B, replugged"), QStringLiteral("Ionbar"),
                         productIn(stage, amplifierPort));
    stage.findings.holds(QStringLiteral("graphs of BPM2 back"), !cloud->isHidden());
    stage.hand.close(ports);
}

void tour::lookAround(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Look around"));
    QWidget* amplifiers = stage.open("actionPico_Amp", "WindowPico");
    stage.hand.wait(noticeSeconds);
    stage.camera.take(amplifiers, QStringLiteral("pico"));
    stage.hand.close(amplifiers);

    QWidget* about = stage.open("action_About", "about");
    stage.camera.take(about, QStringLiteral("about"));
    stage.hand.close(about);

    QWidget* log = stage.open("action_Log", "QsLogging::Window");
    const QAbstractItemModel* lines = find<QTableView>(log, "tableViewMessages")->model();
    QStringList texts;
    for (int row = 0; row < lines->rowCount(); ++row)
        texts.append(lines->index(row, lines->columnCount() - 1).data().toString());
    stage.findings.holds(QStringLiteral("log tells of the start"),
                         !texts.filter(QStringLiteral("Started logger")).isEmpty());
    stage.findings.near(QStringLiteral("failures in the log"), QString(), 0, 0,
                        texts.filter(QStringLiteral("failed")).size());
    stage.camera.take(log, QStringLiteral("log-window"));
    stage.hand.close(log);
}

void tour::goHome(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Go home"));
    stage.hand.choose("action_Login");
    QWidget* dialog = stage.hand.widget("DialogLogin");
    stage.hand.type(find<QLineEdit>(dialog, "usernameLineEdit"), QStringLiteral("cruise"));
    stage.hand.type(find<QLineEdit>(dialog, "passwordLineEdit"), QString());
    const MessageBoxes boxes;
    stage.hand.press(find<QPushButton>(dialog, "logIn"));
    stage.findings.holds(QStringLiteral("no complaint"), boxes.count() == 0);
    stage.findings.equal(QStringLiteral("level"), QStringLiteral("cruise"),
                         find<QLabel>(dialog, "currentLevel")->text());
    stage.findings.holds(QStringLiteral("panel closed again"),
                         !stage.hand.widget("WidgetFeedbackControl")->isEnabled());
    stage.hand.close(dialog);
    stage.findings.near(QStringLiteral("pictures that could not be taken"), QString(), 0, 0, stage.camera.failures());
}
