#include "support/ReadoutLineEdit.h"

#include "support/Legibility.h"

ReadoutLineEdit::ReadoutLineEdit(QWidget* parent) : QLineEdit(parent)
{
    // A new text leaves the cursor at its end, and the field would show that end.
    connect(this, SIGNAL(textChanged(QString)), this, SLOT(showStart()));
    dress();
}

void ReadoutLineEdit::setWidestText(const QString& text)
{
    widest = text;
    updateGeometry();
}

void ReadoutLineEdit::setOld(bool isOld)
{
    if (old == isOld)
        return;
    old = isOld;
    dress();
}

QSize ReadoutLineEdit::sizeHint() const
{
    QSize hint = QLineEdit::sizeHint();
    if (widest.isEmpty())
        return hint;
    // The style's own hint has room for 17 times this letter; frame and margins stay as they are.
    constexpr int lettersInHint = 17;
    const QFontMetrics metrics = fontMetrics();
    hint.rwidth() += metrics.horizontalAdvance(widest) - lettersInHint * metrics.horizontalAdvance(QLatin1Char('x'));
    return hint;
}

QSize ReadoutLineEdit::minimumSizeHint() const
{
    return widest.isEmpty() ? QLineEdit::minimumSizeHint() : sizeHint();
}

void ReadoutLineEdit::showStart()
{
    setCursorPosition(0);
}

void ReadoutLineEdit::dress()
{
    setPalette(old ? legibility::oldValue() : legibility::liveValue());
}
