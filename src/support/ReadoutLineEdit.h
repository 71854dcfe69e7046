#pragma once

#include <QLineEdit>

/// A value that the program shows and the operator does not edit. It is legible whether the panel around it is enabled
/// or not, has no background of its own, so that it does not look like a field to fill in, and always shows the start
/// of its text. It is never narrower than its widest usual text in its own font. GUI thread.
class ReadoutLineEdit : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(QString widestText READ widestText WRITE setWidestText)

public:
    explicit ReadoutLineEdit(QWidget* parent = nullptr);

    QString widestText() const { return widest; }
    /// Empty leaves the width to the style.
    void setWidestText(const QString& text);

    bool isOld() const { return old; }
    /// Greys a value that is no longer measured.
    void setOld(bool isOld);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private slots:
    void showStart();

private:
    void dress();

    QString widest;
    bool old = false;
};
