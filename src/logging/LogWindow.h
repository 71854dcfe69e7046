#pragma once

#include "logging/LogMessage.h"
#include "logging/LogWindowModel.h"

#include <QDialog>

#include <memory>

namespace Ui {
class LogWindow;
}

namespace QsLogging {

class WindowLogFilterProxyModel;

/// Shows the log while the program runs. Collects lines from construction on, shown or not. GUI thread; lines
/// reach addLogMessage() by a queued connection.
class Window : public QDialog
{
    Q_OBJECT

public:
    explicit Window(QWidget* parent = nullptr);
    ~Window() override;

    bool eventFilter(QObject* object, QEvent* event) override;

private slots:
    void addLogMessage(QsLogging::LogMessage m);
    void OnPauseClicked();
    void OnSaveClicked();
    void OnClearClicked();
    void OnCopyClicked();
    void OnLevelChanged(int value);
    void OnAutoScrollChanged(bool checked);
    void ModelRowsInserted(QModelIndex parent, int start, int last);

private:
    void connectControls();
    void setHeaderSizes();
    void fillLevels();
    QString selectedText() const;

    LogWindowModel model;
    std::unique_ptr<Ui::LogWindow> form;
    std::unique_ptr<WindowLogFilterProxyModel> proxy;
    bool paused = false;
    bool autoScroll = true;
};

} // namespace QsLogging
