#include "LogWindowDesk.h"

#include "logging/DestinationMaker.h"
#include "logging/Log.h"
#include "support/FailedSaves.h"
#include "support/FileContent.h"
#include "support/FileDialogs.h"
#include "support/FullDisk.h"
#include "support/MessageBoxes.h"

#include <QHeaderView>
#include <QSet>
#include <QStyledItemDelegate>
#include <QTextCodec>

#include <malloc.h>
#include <sys/stat.h>

using namespace QsLogging;

namespace {

const int allLevels[] = {TraceLevel, DebugLevel, InfoLevel, WarnLevel, ErrorLevel, FatalLevel};

/// Bytes on the heap; 0 where another allocator than the C library's is at work.
std::size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Draws as any delegate, and remembers the rows whose size it was asked for.
class RowsMeasured : public QStyledItemDelegate
{
public:
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        rows.insert(index.row());
        return QStyledItemDelegate::sizeHint(option, index);
    }
    mutable QSet<int> rows;
};

void settle()
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

} // namespace

class LogWindowTest : public LogWindowDesk
{
    Q_OBJECT

private:
    void addOneOfEachLevel()
    {
        for (const int level : allLevels)
            add(line(level, QString::number(level)));
    }
    /// The message column as shown.
    QStringList shown()
    {
        QStringList texts;
        for (int row = 0; row < table()->model()->rowCount(); ++row)
            texts += table()->model()->index(row, 2).data().toString();
        return texts;
    }
    static QString clipboard() { return QApplication::clipboard()->text(); }

private slots:
    void formIsAsDescribed()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Log window"));
        QCOMPARE(window->size(), QSize(599, 539));
        const struct
        {
            const char* name;
            const char* text;
        } buttons[] = {{"toolButtonPause", "&Pause"},
                       {"toolButtonSave", "&Save"},
                       {"toolButtonClear", "C&lear"},
                       {"toolButtonCopy", "&Copy"}};
        for (const auto& each : buttons) {
            QCOMPARE(button(each.name)->text(), QString::fromLatin1(each.text));
            QCOMPARE(button(each.name)->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
            QVERIFY(button(each.name)->autoRaise());
            QVERIFY(!button(each.name)->icon().isNull());
        }
        QCOMPARE(operate::find<QLabel>(window.get(), "label")->text(), QStringLiteral("Level:"));
        QCOMPARE(autoScroll()->text(), QStringLiteral("&Auto scroll"));
        QVERIFY(autoScroll()->isChecked());
    }

    void tableIsAsDescribed()
    {
        QVERIFY(!table()->hasAutoScroll());
        QVERIFY(table()->alternatingRowColors());
        QVERIFY(!table()->showGrid());
        QVERIFY(!table()->wordWrap());
        QVERIFY(!table()->isSortingEnabled());
        addMany(2);
        const QHeaderView* columns = table()->horizontalHeader();
        QCOMPARE(columns->sectionResizeMode(0), QHeaderView::ResizeToContents);
        QCOMPARE(columns->sectionResizeMode(1), QHeaderView::ResizeToContents);
        QCOMPARE(columns->sectionResizeMode(2), QHeaderView::Stretch);
        QCOMPARE(table()->verticalHeader()->sectionResizeMode(0), QHeaderView::ResizeToContents);
        QCOMPARE(table()->verticalHeader()->sectionResizeMode(1), QHeaderView::ResizeToContents);
    }

    void iconsAreThere()
    {
        for (const char* name : {"pause", "resume", "save", "clear", "copy"}) {
            const QImage image(QStringLiteral(":/QsLogWindow/images/icon-%1-16.png").arg(QLatin1String(name)));
            QCOMPARE(image.size(), QSize(16, 16));
        }
    }

    void levelBoxOffersTheSixLevelsAndStandsAtInfo()
    {
        QCOMPARE(levels()->count(), 6);
        for (const int level : allLevels) {
            QCOMPARE(levels()->itemText(level), levelName(level));
            QCOMPARE(levels()->itemData(level).toInt(), level);
        }
        QCOMPARE(levels()->currentIndex(), 2);
        addOneOfEachLevel();
        QCOMPARE(shown().size(), 4);
    }

    void rowShowsLocalTimeLevelNameAndMessage()
    {
        add(WarnLevel, "setFBenable() failed ");
        QAbstractItemModel* model = table()->model();
        QCOMPARE(model->columnCount(), 3);
        QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Time"));
        QCOMPARE(model->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Level"));
        QCOMPARE(model->headerData(2, Qt::Horizontal).toString(), QStringLiteral("Message"));
        QCOMPARE(model->index(0, 0).data().toString(), someTime.toLocalTime().toString(Qt::TextDate));
        QVERIFY(model->index(0, 0).data().toString().contains(QStringLiteral("12:20:30")));
        QCOMPARE(model->index(0, 1).data().toString(), QStringLiteral("Warning"));
        QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("setFBenable() failed "));
    }

    void columnOneHundredIsTheWholeLineAndNotShown()
    {
        class OpenModel : public LogWindowModel
        {
        public:
            using LogWindowModel::LogWindowModel;
            using QAbstractTableModel::createIndex;
        } model(~quint64(0));
        model.append(line(ErrorLevel, QStringLiteral("m")));
        QCOMPARE(model.columnCount(), 3);
        QCOMPARE(model.data(model.createIndex(0, 100)).toString(), QStringLiteral("ERROR 2026-07-01T12:20:30.045 m"));
        QVERIFY(!model.data(model.createIndex(0, 3)).isValid());
        QVERIFY(!model.headerData(100, Qt::Horizontal).isValid());
    }

    void warningsAndWorseAreColoured()
    {
        levels()->setCurrentIndex(TraceLevel);
        addOneOfEachLevel();
        const QAbstractItemModel* model = table()->model();
        for (int column = 0; column < 3; ++column) {
            for (const int level : {TraceLevel, DebugLevel, InfoLevel})
                QVERIFY(!model->index(level, column).data(Qt::BackgroundRole).isValid());
            QCOMPARE(model->index(3, column).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 255, 128));
            QCOMPARE(model->index(4, column).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 128, 128));
            QCOMPARE(model->index(5, column).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 0, 0));
        }
    }

    void levelFilterAtErrorHidesWarningsAndShowsErrors()
    {
        addOneOfEachLevel();
        levels()->setCurrentIndex(ErrorLevel);
        QCOMPARE(shown(), QStringList({QStringLiteral("4"), QStringLiteral("5")}));
        QCOMPARE(table()->model()->index(0, 0).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 128, 128));
        add(WarnLevel, "late warning");
        add(ErrorLevel, "late error");
        QCOMPARE(shown(), QStringList({QStringLiteral("4"), QStringLiteral("5"), QStringLiteral("late error")}));
        levels()->setCurrentIndex(TraceLevel);
        QCOMPARE(shown().size(), 8);
        QCOMPARE(shown().last(), QStringLiteral("late error"));
    }

    void nothingIsEverDropped()
    {
        addMany(20000);
        QCOMPARE(shown().size(), 20000);
        QCOMPARE(shown().first(), QStringLiteral("0"));
        QCOMPARE(shown().last(), QStringLiteral("19999"));
    }

    void limitedModelDropsTheOldestAndSaysThatAllRowsChanged()
    {
        LogWindowModel model(2);
        QSignalSpy inserted(&model, SIGNAL(rowsInserted(QModelIndex, int, int)));
        QSignalSpy changed(&model, SIGNAL(dataChanged(QModelIndex, QModelIndex)));
        for (int number = 0; number < 3; ++number)
            model.append(line(InfoLevel, QString::number(number)));
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.at(0).message, QStringLiteral("1"));
        QCOMPARE(model.at(1).message, QStringLiteral("2"));
        QCOMPARE(inserted.count(), 3);
        QCOMPARE(inserted.at(2).at(1).toInt(), 2);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toModelIndex(), model.index(0, 0));
        QCOMPARE(changed.at(0).at(1).toModelIndex(), model.index(1, 2));
    }

    void pauseKeepsNewLinesOutOfViewAndResumeBringsThemBack()
    {
        addMany(3);
        button("toolButtonPause")->click();
        QCOMPARE(button("toolButtonPause")->text(), QStringLiteral("&Resume"));
        const auto showsPicture = [this](const char* name) {
            const QImage wanted(QStringLiteral(":/QsLogWindow/images/icon-%1-16.png").arg(QLatin1String(name)));
            return button("toolButtonPause")->icon().pixmap(16).toImage().convertToFormat(wanted.format()) == wanted;
        };
        QVERIFY(showsPicture("resume"));
        addMany(5);
        // Up to the source row whose number is the count of rows at the pause: one line more.
        QCOMPARE(shown().size(), 4);
        button("toolButtonPause")->click();
        QCOMPARE(button("toolButtonPause")->text(), QStringLiteral("&Pause"));
        QVERIFY(showsPicture("pause"));
        QCOMPARE(shown().size(), 8);
    }

    void pauseCountsFilteredRowsAndComparesThemWithAllRows()
    {
        addMany(4, DebugLevel);
        addMany(2);
        QCOMPARE(shown().size(), 2);
        button("toolButtonPause")->click();
        // What is shown stays until something invalidates the filter.
        QCOMPARE(shown().size(), 2);
        levels()->setCurrentIndex(FatalLevel);
        // Then the first rows of the log up to number 2 show, whatever their level.
        QCOMPARE(shown(), QStringList({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
        QCOMPARE(table()->model()->index(0, 1).data().toString(), QStringLiteral("Debug"));
    }

    void pauseWithAnEmptyViewDoesNotPause()
    {
        button("toolButtonPause")->click();
        addMany(3);
        QCOMPARE(shown().size(), 3);
    }

    void clearWhilePausedKeepsTheRowLimit()
    {
        addMany(3);
        button("toolButtonPause")->click();
        button("toolButtonClear")->click();
        QCOMPARE(shown().size(), 0);
        addMany(10, TraceLevel);
        QCOMPARE(shown(),
                 QStringList({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    }

    void clearEmptiesTheLog()
    {
        addMany(3);
        button("toolButtonClear")->click();
        QCOMPARE(table()->model()->rowCount(), 0);
        addMany(1);
        QCOMPARE(shown(), QStringList(QStringLiteral("0")));
    }

    void controlCWithNothingSelectedCopiesAllVisibleLines()
    {
        show();
        add(DebugLevel, "hidden");
        add(InfoLevel, "one ");
        add(ErrorLevel, "two ");
        // The table's own copy of its current cell must not come behind.
        table()->selectionModel()->setCurrentIndex(table()->model()->index(0, 2), QItemSelectionModel::NoUpdate);
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard(), QStringLiteral("INFO  2026-07-01T12:20:30.045 one \n"
                                             "ERROR 2026-07-01T12:20:30.045 two \n"));
    }

    void otherKeysOfTheTableCopyNothing()
    {
        show();
        addMany(2);
        QTest::keyClick(table(), Qt::Key_C);
        QTest::keyClick(table(), Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(clipboard(), QStringLiteral("untouched"));
    }

    void selectedRowsAreCopiedInDisplayOrder()
    {
        addMany(5);
        QItemSelectionModel* selection = table()->selectionModel();
        for (const int row : {3, 0, 2})
            selection->select(table()->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        button("toolButtonCopy")->click();
        QCOMPARE(clipboard(), QStringLiteral("INFO  2026-07-01T12:20:30.045 0\n"
                                             "INFO  2026-07-01T12:20:30.045 2\n"
                                             "INFO  2026-07-01T12:20:30.045 3\n"));
    }

    void clickSelectsTheWholeLine()
    {
        show();
        addMany(3);
        QCoreApplication::processEvents();
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          table()->visualRect(table()->model()->index(1, 1)).center());
        button("toolButtonCopy")->click();
        QCOMPARE(clipboard(), QStringLiteral("INFO  2026-07-01T12:20:30.045 1\n"));
    }

    void selectedRowsThatStayAreStillSelectedAfterAChangeOfTheLevel()
    {
        addOneOfEachLevel();
        table()->selectionModel()->select(table()->model()->index(3, 0), // the fatal one
                                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
        table()->selectionModel()->select(table()->model()->index(0, 0), // the information
                                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
        levels()->setCurrentIndex(ErrorLevel);
        const QModelIndexList rows = table()->selectionModel()->selectedRows(2);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().data().toString(), QStringLiteral("5"));
    }

    void saveWritesTheVisibleLinesAsUtf8()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        QTemporaryDir folder;
        add(InfoLevel, "one");
        add(line(WarnLevel, QStringLiteral("2 \u00b5m")));
        FileDialogs answered(folder.filePath(QStringLiteral("kept")));
        button("toolButtonSave")->click();
        QCOMPARE(answered.dialogs().size(), 1);
        QCOMPARE(answered.dialogs().first().caption, QStringLiteral("Save log"));
        QCOMPARE(answered.dialogs().first().nameFilters, QStringList(QStringLiteral("Log file (*.log)")));
        QCOMPARE(answered.dialogs().first().defaultSuffix, QStringLiteral("log"));
        QFile file(folder.filePath(QStringLiteral("kept.log")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("INFO  2026-07-01T12:20:30.045 one\n"
                                            "WARN  2026-07-01T12:20:30.045 2 \xc2\xb5m\n"));
    }

    void markupInTheNameOfASavedLogIsShownAsItStands()
    {
        const QTemporaryDir folder;
        addMany(1);
        QFile old(folder.filePath(QStringLiteral("<b>.log")));
        QVERIFY(old.open(QIODevice::WriteOnly));
        FileDialogs answered(old.fileName());
        answered.answerByButton();
        const MessageBoxes boxes(QMessageBox::Yes);
        button("toolButtonSave")->click();
        QCOMPARE(boxes.count(), 1);
        QVERIFY(boxes.boxes().first().text.contains(QLatin1String("<b>.log")));
        QCOMPARE(boxes.boxes().first().textFormat, Qt::PlainText);
    }

    void saveThatIsCancelledOrCannotBeOpenedWritesNothing()
    {
        QTemporaryDir folder;
        addMany(1);
        FileDialogs answered{QString()};
        button("toolButtonSave")->click();
        QCOMPARE(answered.dialogs().size(), 1);
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("taken.log")));
        answered.answerWith(folder.filePath(QStringLiteral("taken.log")));
        button("toolButtonSave")->click();
        QCOMPARE(answered.dialogs().size(), 2);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 0);
    }

    void saveThatFailsKeepsTheOlderFileAndIsTold()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("kept.log"));
        const FileDialogs answered(path);
        addMany(1);
        button("toolButtonSave")->click();
        const QByteArray old = contentOf(path);
        QVERIFY(!old.isEmpty());
        addMany(1000);
        MessageBoxes boxes;
        {
            const FullDisk disk;
            button("toolButtonSave")->click();
        }
        QCOMPARE(boxes.count(), 1);
        compareFailedSave(boxes.boxes().first(), path, QStringLiteral("File too large"));
        QCOMPARE(contentOf(path), old);
        QCOMPARE(namesIn(folder.path()), QStringList(QStringLiteral("kept.log")));
    }

    void saveToAPipeWithoutAReaderIsRefusedWithoutAMessage()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("pipe.log"));
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        const FileDialogs answered(path);
        const MessageBoxes boxes;
        addMany(1);
        button("toolButtonSave")->click();
        // The file dialog itself asks whether to replace it.
        for (const MessageBoxes::Box& box : boxes.boxes())
            QVERIFY(box.title != QLatin1String("File not saved"));
        QCOMPARE(namesIn(folder.path()), QStringList(QStringLiteral("pipe.log")));
    }

    void rowsAreAsHighAsAPlainTableMakesThem()
    {
        show();
        add(InfoLevel, "plain");
        add(InfoLevel, "two\nlines");
        add(InfoLevel, "plain again");
        QTableView reference;
        reference.setFont(table()->font());
        reference.setWordWrap(false);
        reference.setShowGrid(false);
        reference.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        reference.setModel(table()->model());
        reference.show();
        QVERIFY(QTest::qWaitForWindowExposed(&reference));
        QCoreApplication::processEvents();
        for (int row = 0; row < 3; ++row)
            QCOMPARE(table()->rowHeight(row), reference.rowHeight(row));
        QVERIFY(table()->rowHeight(1) > table()->rowHeight(0));
        QCOMPARE(table()->rowHeight(0), table()->verticalHeader()->defaultSectionSize());
    }

    void newLineMeasuresFewOfTheOthers_data()
    {
        QTest::addColumn<bool>("shown");
        QTest::newRow("shown") << true;
        QTest::newRow("hidden") << false;
    }
    void newLineMeasuresFewOfTheOthers()
    {
        QFETCH(bool, shown);
        RowsMeasured delegate;
        table()->setItemDelegate(&delegate);
        if (shown)
            show();
        // A line of two rows is measured by the delegate each time.
        for (int number = 0; number < 1000; ++number)
            add(InfoLevel, "two\nlines");
        settle();
        delegate.rows.clear();
        add(InfoLevel, "plain");
        settle();
        QVERIFY2(delegate.rows.size() < 300, qPrintable(QString::number(delegate.rows.size())));
        QCOMPARE(table()->verticalHeader()->count(), 1001);
        QCOMPARE(table()->verticalHeader()->sectionResizeMode(1000), QHeaderView::ResizeToContents);
        QCOMPARE(table()->rowHeight(1000), table()->verticalHeader()->defaultSectionSize());
    }

    void lineThatIsNotAsBuiltIsKeptWhole()
    {
        LogMessage odd = line(InfoLevel, QStringLiteral("text"));
        odd.formatted = QStringLiteral("something else");
        add(odd);
        odd.formatted.clear();
        add(odd);
        add(InfoLevel, "as built");
        button("toolButtonCopy")->click();
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("something else\n\n%1\n").arg(line(InfoLevel, QStringLiteral("as built")).formatted));
    }

    void shortLineTakesLittleMemory()
    {
        if (heapBytes() == 0)
            QSKIP("This build has an allocator of its own");
        constexpr int lines = 100000;
        add(InfoLevel, "the first");
        const std::size_t before = heapBytes();
        for (int number = 0; number < lines; ++number)
            add(LogMessage(QStringLiteral("setFBenable() failed %1 ").arg(number), someTime.addMSecs(number),
                           InfoLevel));
        settle();
        const double perLine = double(heapBytes() - before) / lines;
        QVERIFY2(perLine < 200, qPrintable(QString::number(perLine)));
    }

    void linesOfTheLoggerArriveWithoutTrace()
    {
        Logger::instance().addDestination(
            DestinationMaker::newFunctorDestination(window.get(), SLOT(addLogMessage(QsLogging::LogMessage))));
        levels()->setCurrentIndex(TraceLevel);
        Logger::instance().setLevel(TraceLevel);
        KORA_LOG_TRACE << "trace";
        KORA_LOG_INFO << "Started logger";
        QTRY_COMPARE(shown(), QStringList(QStringLiteral("Started logger ")));
        Logger::instance().setLevel(InfoLevel);
        Logger::instance().removeDestination(QStringLiteral("functor"));
    }

    void closedWindowGoesOnCollecting()
    {
        show();
        addMany(1);
        window->close();
        addMany(2);
        QCOMPARE(shown().size(), 3);
    }
};

QTEST_MAIN(LogWindowTest)
#include "LogWindowTest.moc"
