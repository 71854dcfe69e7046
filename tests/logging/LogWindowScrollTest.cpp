#include "LogWindowDesk.h"

using namespace QsLogging;

/// Which lines are in view when lines come.
class LogWindowScrollTest : public LogWindowDesk
{
    Q_OBJECT

private slots:
    void newLineIsScrolledToWhileAutoScrollIsOn()
    {
        show();
        addMany(200);
        QTRY_VERIFY(bar()->maximum() > 100);
        QTRY_COMPARE(bar()->value(), bar()->maximum());
        addMany(1);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 200);
        bar()->setValue(0);
        addMany(1);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 201);
    }

    void windowThatChangesItsSizeStaysWhereItWasScrolledTo()
    {
        show();
        addMany(200);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 199);
        bar()->setValue(10);
        const int before = bar()->maximum();
        window->resize(window->width(), window->height() - 100);
        QTRY_VERIFY(bar()->maximum() > before);
        QCOMPARE(bar()->value(), 10);
    }

    void levelDoesNotMoveTheViewFromTheEnd()
    {
        show();
        addMany(100, DebugLevel);
        addMany(100);
        QTRY_VERIFY(bar()->value() > 0 && bar()->value() == bar()->maximum());
        const int before = bar()->value();
        levels()->setCurrentIndex(DebugLevel);
        QTRY_VERIFY(bar()->maximum() > before);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), before);
        // Also when the lines before it are still to be laid out.
        addMany(20);
        levels()->setCurrentIndex(TraceLevel);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), bar()->maximum());
        levels()->setCurrentIndex(ErrorLevel);
        addMany(1);
        levels()->setCurrentIndex(TraceLevel);
        QTRY_VERIFY(bar()->maximum() > before);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), 0);
        addMany(1);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 221);
    }

    void sizeDoesNotMoveTheViewFromTheEnd()
    {
        show();
        addMany(200);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 199);
        const int before = bar()->value();
        window->resize(window->width(), window->height() - 100);
        QTRY_VERIFY(bar()->maximum() > before);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), before);
        addMany(1);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 200);
    }

    void viewStaysWhereItIsWithoutAutoScroll()
    {
        show();
        addMany(200);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 199);
        autoScroll()->click();
        bar()->setValue(10);
        addMany(50);
        QTRY_VERIFY(bar()->maximum() > 220);
        QCOMPARE(bar()->value(), 10);
    }

    void viewStaysAtTheLineBeforeWithoutAutoScrollAtTheEnd()
    {
        show();
        addMany(200);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 199);
        const int before = bar()->value();
        autoScroll()->click();
        addMany(50);
        QTRY_VERIFY(bar()->maximum() >= before + 50);
        QCOMPARE(bar()->value(), before);
    }

    void viewStaysWhereItIsWhilePaused()
    {
        show();
        addMany(200);
        QTRY_COMPARE(table()->rowAt(table()->viewport()->height() - 3), 199);
        bar()->setValue(10);
        button("toolButtonPause")->click();
        addMany(50);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), 10);
    }

    void moreRowsDoNotMoveTheViewWhilePausedOrWithoutAutoScroll_data()
    {
        QTest::addColumn<QString>("stopper");
        QTest::newRow("paused") << QStringLiteral("toolButtonPause");
        QTest::newRow("without auto scroll") << QStringLiteral("checkBoxAutoScroll");
    }

    void moreRowsDoNotMoveTheViewWhilePausedOrWithoutAutoScroll()
    {
        QFETCH(QString, stopper);
        show();
        addMany(100, DebugLevel);
        addMany(100);
        QTRY_VERIFY(bar()->value() > 0 && bar()->value() == bar()->maximum());
        const int before = bar()->maximum();
        operate::find<QAbstractButton>(window.get(), qPrintable(stopper))->click();
        levels()->setCurrentIndex(DebugLevel);
        QTRY_VERIFY(bar()->maximum() > before);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->value(), before);
    }
};

QTEST_MAIN(LogWindowScrollTest)
#include "LogWindowScrollTest.moc"
