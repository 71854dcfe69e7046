// The board as it looks: shares of the docks, titles and tabs, and how the menus bring windows forward.

#include "app/BuiltMainWindow.h"
#include "hardware/MailboxComm.h"
#include "support/Contrast.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QToolBar>

#include <cmath>

using operate::find;

namespace {

/// Nothing more to lay out.
void settle()
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

} // namespace

class BoardTest : public BuiltMainWindow
{
    Q_OBJECT

private:
    static constexpr int rounding = 3;

    void showBoard(const QSize& size)
    {
        build();
        mailbox->nrIonBars = 3;
        mailbox->emitNrIonBars();
        window->resize(size);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        settle();
    }

    void resizeBoard(const QSize& size)
    {
        window->resize(size);
        QTRY_COMPARE(window->size(), size);
        settle();
    }

    QVector<QRect> places()
    {
        QVector<QRect> found;
        for (const char* title : {"Graph XY", "Graph XY 2", "Feedback Control", "Graph FFT", "PID Configuration"})
            found.append(dock(title)->geometry());
        return found;
    }

    static QString told(const QVector<QRect>& rectangles)
    {
        QStringList texts;
        for (const QRect& r : rectangles)
            texts.append(QStringLiteral("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()));
        return texts.join(QLatin1String("; "));
    }

    static bool alike(const QRect& a, const QRect& b)
    {
        return std::abs(a.left() - b.left()) <= rounding && std::abs(a.top() - b.top()) <= rounding &&
               std::abs(a.width() - b.width()) <= rounding && std::abs(a.height() - b.height()) <= rounding;
    }

    double widthRatio(const char* first, const char* second)
    {
        return double(dock(first)->width()) / dock(second)->width();
    }

private slots:
    void aBoardThatWasSmallLooksLikeOneThatStartedLarge()
    {
        showBoard(QSize(1600, 1000));
        const QVector<QRect> fromTheStart = places();
        showBoard(QSize(1100, 700));
        resizeBoard(QSize(1600, 1000));
        const QVector<QRect> grown = places();
        for (int i = 0; i < grown.size(); ++i)
            QVERIFY2(alike(grown[i], fromTheStart[i]),
                     qPrintable(told(fromTheStart) + QLatin1String(" / ") + told(grown)));
    }

    void theSharesAreTheSameOnAVeryLargeScreen()
    {
        showBoard(QSize(1280, 800));
        const double pidShare = widthRatio("PID Configuration", "Graph FFT");
        const double panelShare = widthRatio("Feedback Control", "Graph XY");
        resizeBoard(QSize(3840, 2160));
        QVERIFY(std::abs(widthRatio("PID Configuration", "Graph FFT") - pidShare) < 0.03);
        QVERIFY(std::abs(widthRatio("Feedback Control", "Graph XY") - panelShare) < 0.03);
        const double heights = double(dock("Graph FFT")->height()) / dock("Graph XY")->height();
        QVERIFY2(heights > 0.95 && heights < 1.25, qPrintable(QString::number(heights)));
    }

    void aShareThatTheOperatorDragsIsKept()
    {
        showBoard(QSize(1280, 800));
        const QRect left = dock("Graph XY")->geometry();
        const QPoint separator(left.right() + 2, left.center().y());
        QTest::mousePress(window.get(), Qt::LeftButton, Qt::NoModifier, separator);
        QMouseEvent drag(QEvent::MouseMove, separator + QPoint(-60, 0), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &drag);
        QTRY_VERIFY(dock("Graph XY")->width() < left.width() - 40);
        QTest::mouseRelease(window.get(), Qt::LeftButton, Qt::NoModifier, separator + QPoint(-60, 0));
        settle();
        const double dragged = widthRatio("Graph XY", "Graph XY 2");
        resizeBoard(QSize(1800, 1000));
        QVERIFY(dragged < 0.9);
        QVERIFY(std::abs(widthRatio("Graph XY", "Graph XY 2") - dragged) < 0.03);
    }

    void theEmptyToolBarTakesNoRoom()
    {
        showBoard(QSize(1280, 800));
        QVERIFY(!find<QToolBar>(window.get(), "mainToolBar")->isVisible());
        QVERIFY(dock("Graph XY")->y() <= window->menuBar()->geometry().bottom() + rounding);
    }

    void theMenuOfTheDocksHasNoEntryWithoutAName()
    {
        showBoard(QSize(1280, 800));
        const std::unique_ptr<QMenu> menu(window->createPopupMenu());
        QVERIFY(menu);
        int entries = 0;
        for (const QAction* entry : menu->actions()) {
            if (!entry->isVisible() || entry->isSeparator())
                continue;
            QVERIFY(!entry->text().isEmpty());
            ++entries;
        }
        QVERIFY(entries >= 8);
    }

    void theButtonsOfTheDockTitlesAreSeen()
    {
        showBoard(QSize(1280, 800));
        qApp->setStyleSheet(QStringLiteral("QWidget::title { background: rgb(150, 150, 150); }"));
        settle();
        const QImage picture = window->grab().toImage();
        qApp->setStyleSheet(QString());
        int buttons = 0;
        for (const QAbstractButton* button : dock("Graph XY")->findChildren<QAbstractButton*>()) {
            if (!button->objectName().startsWith(QLatin1String("qt_dockwidget_")))
                continue;
            const QRect place(button->mapTo(window.get(), QPoint(0, 0)), button->size());
            int seen = 0;
            for (int y = place.top(); y <= place.bottom(); ++y) {
                for (int x = place.left(); x <= place.right(); ++x)
                    seen += contrast::ratio(picture.pixelColor(x, y), QColor(150, 150, 150)) > 4.5;
            }
            QVERIFY2(seen >= 10, qPrintable(QString::number(seen)));
            ++buttons;
        }
        QCOMPARE(buttons, 2);
    }

    void titlesOfTabsAreToldInFullByTheirToolTips()
    {
        showBoard(QSize(1000, 700));
        int tabs = 0;
        for (const QTabBar* bar : window->findChildren<QTabBar*>()) {
            for (int tab = 0; tab < bar->count(); ++tab) {
                QCOMPARE(bar->tabToolTip(tab), bar->tabText(tab));
                ++tabs;
            }
        }
        QCOMPARE(tabs, 7 + 4);
    }

    void theStatisticsOfOneMonitorFitOnASmallScreen()
    {
        showBoard(QSize(1280, 775));
        mailbox->nrIonBars = 1;
        mailbox->emitNrIonBars();
        settle();
        int fields = 0;
        for (const QLineEdit* field : find<QWidget>(window.get(), "bpm1Table")->findChildren<QLineEdit*>()) {
            QCOMPARE(field->visibleRegion(), QRegion(field->rect()));
            ++fields;
        }
        QCOMPARE(fields, 9);
    }

    void theMenuBringsACoveredWindowToTheFront()
    {
        showBoard(QSize(1280, 800));
        QWidget* covered = nullptr;
        for (const char* entry : {"action_Beamline_Settings", "actionPico_Amp"}) {
            action(entry)->trigger();
            QWidget* opened = nullptr;
            for (QWidget* dialog : window->findChildren<QDialog*>()) {
                if (dialog->isVisible() && dialog != covered)
                    opened = dialog;
            }
            QVERIFY(opened);
            QVERIFY(QTest::qWaitForWindowExposed(opened));
            opened->move(100, 100);
            if (!covered)
                covered = opened;
        }
        settle();
        const QPoint inBoth = covered->mapToGlobal(QPoint(40, 40));
        QTRY_VERIFY(QApplication::topLevelAt(inBoth) != covered);
        action("action_Beamline_Settings")->trigger();
        QTRY_COMPARE(QApplication::topLevelAt(inBoth), covered);
        covered->showMinimized();
        action("action_Beamline_Settings")->trigger();
        QVERIFY(!covered->isMinimized());
    }
};

QTEST_MAIN(BoardTest)
#include "BoardTest.moc"
