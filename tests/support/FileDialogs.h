#pragma once

#include <QObject>
#include <QStringList>
#include <QVector>

/// From construction to destruction answers every file dialog that opens, and keeps what it asked.
class FileDialogs : public QObject
{
    Q_OBJECT

public:
    struct Dialog
    {
        QString caption;
        QStringList nameFilters;
        QString proposedName; ///< without folder
        QString defaultSuffix;
    };

    /// @param answer path that is chosen; empty cancels
    explicit FileDialogs(const QString& answer);

    void answerWith(const QString& path) { answer = path; }
    /// Answers by the dialog's own button, so that the dialog may ask whether a file shall be replaced.
    void answerByButton() { byButton = true; }
    const QVector<Dialog>& dialogs() const { return kept; }

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QString answer;
    bool byButton = false;
    QVector<Dialog> kept;
};
