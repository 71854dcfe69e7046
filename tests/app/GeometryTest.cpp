// Every window on the screen that this suite is started on, at the usual size of the letters and at half as much again.

#include "app/EveryWindow.h"
#include "app/SimulatedSession.h"
#include "app/WindowGeometry.h"
#include "support/Operator.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QScreen>
#include <QScrollArea>
#include <QTabWidget>
#include <QToolBox>
#include <QtTest>

using operate::find;

namespace {

/// Brings each panel that is behind another one to the front in turn, and lets the caller look.
template <typename Look>
void onEveryPage(SimulatedSession& session, const Look& look)
{
    for (QDockWidget* dock : session.window().findChildren<QDockWidget*>()) {
        dock->raise();
        look();
    }
    for (auto* pages : session.window().findChildren<QToolBox*>()) {
        for (int page = 0; page < pages->count(); ++page) {
            pages->setCurrentIndex(page);
            look();
        }
    }
    for (auto* tabs : session.window().findChildren<QTabWidget*>()) {
        for (int page = 0; page < tabs->count(); ++page) {
            tabs->setCurrentIndex(page);
            look();
        }
    }
}

} // namespace

class GeometryTest : public QObject
{
    Q_OBJECT

private:
    QFont usual;
    std::unique_ptr<SimulatedSession> session;

    void start(double letters)
    {
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * letters);
        QApplication::setFont(font);
        session = std::make_unique<SimulatedSession>();
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        session->window().resize(session->window().screen()->availableSize());
        session->tick();
        // What the layouts ask for in turn.
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
    }

    static void addFontRows()
    {
        QTest::addColumn<double>("letters");
        QTest::newRow("1.0") << 1.0;
        QTest::newRow("1.5") << 1.5;
    }

private slots:
    void initTestCase() { usual = QApplication::font(); }
    void cleanup()
    {
        session.reset();
        QApplication::setFont(usual);
    }

    void nothingIsCutCoveredOrOutOfReachInAnyWindow_data() { addFontRows(); }
    void nothingIsCutCoveredOrOutOfReachInAnyWindow()
    {
        QFETCH(double, letters);
        start(letters);
        QStringList complaints;
        int windows = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            if (!window.widget->isWindow())
                continue;
            ++windows;
            complaints += window_geometry::complaints(window.widget);
        }
        QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QLatin1Char('\n'))));
        QCOMPARE(windows, 16);
    }

    void nothingIsCutCoveredOrOutOfReachOnTheBoard_data() { addFontRows(); }
    void nothingIsCutCoveredOrOutOfReachOnTheBoard()
    {
        QFETCH(double, letters);
        start(letters);
        QStringList complaints;
        int looks = 0;
        onEveryPage(*session, [&] {
            QCoreApplication::processEvents();
            QCoreApplication::processEvents();
            complaints += window_geometry::complaints(&session->window());
            ++looks;
        });
        complaints.removeDuplicates();
        QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QLatin1Char('\n'))));
        QCOMPARE(looks, 11 + 2 + 4);
    }

    void buttonsOfADialogDoNotScrollAway_data() { addFontRows(); }
    void buttonsOfADialogDoNotScrollAway()
    {
        QFETCH(double, letters);
        start(letters);
        int boxes = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            const QWidget* dialog = window.widget;
            for (const QDialogButtonBox* box : dialog->findChildren<QDialogButtonBox*>()) {
                const QRect place(box->mapTo(dialog, QPoint(0, 0)), box->size());
                QVERIFY2(dialog->rect().contains(place), dialog->metaObject()->className());
                QVERIFY2(box->visibleRegion() == QRegion(box->rect()), dialog->metaObject()->className());
                ++boxes;
            }
        }
        QVERIFY2(boxes >= 6, qPrintable(QString::number(boxes)));
    }
};

QTEST_MAIN(GeometryTest)
#include "GeometryTest.moc"
