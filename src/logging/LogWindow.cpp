#include "logging/LogWindow.h"

#include "files/FailedSave.h"
#include "files/OutputFile.h"
#include "logging/WindowLogFilterProxyModel.h"
#include "support/FieldGuard.h"
#include "support/PlainTextBoxes.h"

#include "ui_LogWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QIcon>
#include <QKeyEvent>

#include <algorithm>

namespace QsLogging {

namespace {

constexpr quint64 noLimit = ~quint64(0);

} // namespace

Window::Window(QWidget* parent) : QDialog(parent), model(noLimit), form(std::make_unique<Ui::LogWindow>())
{
    form->setupUi(this);
    new FieldGuard(this);
    connectControls();

    proxy = std::make_unique<WindowLogFilterProxyModel>(InfoLevel, 0);
    proxy->setSourceModel(&model);
    form->tableViewMessages->setModel(proxy.get());
    form->tableViewMessages->installEventFilter(this);

    setHeaderSizes();
    fillLevels();
}

Window::~Window() = default;

bool Window::eventFilter(QObject* object, QEvent* event)
{
    if (object != form->tableViewMessages)
        return QDialog::eventFilter(object, event);
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<const QKeyEvent*>(event);
    if (key->key() != Qt::Key_C || !key->modifiers().testFlag(Qt::ControlModifier))
        return false;
    OnCopyClicked();
    return true;
}

void Window::addLogMessage(QsLogging::LogMessage m)
{
    model.append(m);
}

void Window::OnPauseClicked()
{
    const QString picture = paused ? QStringLiteral("pause") : QStringLiteral("resume");
    form->toolButtonPause->setIcon(QIcon(QStringLiteral(":/QsLogWindow/images/icon-%1-16.png").arg(picture)));
    form->toolButtonPause->setText(paused ? tr("&Pause") : tr("&Resume"));
    paused = !paused;
    if (paused) {
        form->tableViewMessages->stay();
        proxy->pauseRowLimit = proxy->rowCount();
    } else {
        proxy->pauseRowLimit = 0;
        proxy->refilter();
    }
}

void Window::OnSaveClicked()
{
    const QString text = selectedText();
    const PlainTextBoxes plain;
    QFileDialog dialog(this, tr("Save log"));
    dialog.setNameFilter(tr("Log file (*.log)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("log"));
    if (dialog.exec() != QDialog::Accepted)
        return;
    OutputFile file(dialog.selectedFiles().constFirst(), OutputFile::Replace);
    if (!file.begin())
        return;
    // As the log files of the file destination; the default would depend on the locale.
    file.write(text.toUtf8());
    if (!file.commit())
        tellFailedSave(file);
}

void Window::OnClearClicked()
{
    model.clear();
}

void Window::OnCopyClicked()
{
    const QString text = selectedText();
    if (QClipboard* clipboard = QApplication::clipboard())
        clipboard->setText(text);
}

void Window::OnLevelChanged(int value)
{
    form->tableViewMessages->stay();
    proxy->setLevel(value);
}

void Window::OnAutoScrollChanged(bool checked)
{
    autoScroll = checked;
    // Switched on it waits for the next line.
    if (!checked)
        form->tableViewMessages->stay();
}

void Window::ModelRowsInserted(QModelIndex, int, int)
{
    if (autoScroll && !paused)
        form->tableViewMessages->showEnd();
}

void Window::connectControls()
{
    connect(form->toolButtonPause, SIGNAL(clicked()), SLOT(OnPauseClicked()));
    connect(form->toolButtonSave, SIGNAL(clicked()), SLOT(OnSaveClicked()));
    connect(form->toolButtonClear, SIGNAL(clicked()), SLOT(OnClearClicked()));
    connect(form->toolButtonCopy, SIGNAL(clicked()), SLOT(OnCopyClicked()));
    connect(form->comboBoxLevel, SIGNAL(currentIndexChanged(int)), SLOT(OnLevelChanged(int)));
    connect(form->checkBoxAutoScroll, SIGNAL(toggled(bool)), SLOT(OnAutoScrollChanged(bool)));
    // Before the proxy joins, so that the table hears of a line here first.
    connect(&model, SIGNAL(rowsInserted(QModelIndex, int, int)), SLOT(ModelRowsInserted(QModelIndex, int, int)));
}

void Window::setHeaderSizes()
{
    QHeaderView* columns = form->tableViewMessages->horizontalHeader();
    columns->setSectionResizeMode(LogWindowModel::TimeColumn, QHeaderView::ResizeToContents);
    columns->setSectionResizeMode(LogWindowModel::LevelColumn, QHeaderView::ResizeToContents);
    columns->setSectionResizeMode(LogWindowModel::MessageColumn, QHeaderView::Stretch);
    form->tableViewMessages->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void Window::fillLevels()
{
    for (int level = TraceLevel; level <= FatalLevel; ++level)
        form->comboBoxLevel->addItem(levelName(level), level);
    form->comboBoxLevel->setCurrentIndex(InfoLevel);
}

/// The lines to save or copy, in display order: those of the selected rows, or all that are shown.
QString Window::selectedText() const
{
    QModelIndexList rows = form->tableViewMessages->selectionModel()->selectedRows(0);
    std::sort(rows.begin(), rows.end());
    if (rows.isEmpty()) {
        for (int row = 0; row < proxy->rowCount(); ++row)
            rows.append(proxy->index(row, 0));
    }
    QString text;
    for (const QModelIndex& each : rows)
        text += model.at(proxy->mapToSource(each).row()).formatted + QLatin1Char('\n');
    return text;
}

} // namespace QsLogging
