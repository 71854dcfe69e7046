#pragma once

#include <QScrollArea>

/// The part of a window that scrolls where the screen is too low for it; what lies outside, its buttons above all,
/// stays in sight. It asks for the whole height of its page, and can do with a few lines of it. Its page is never cut
/// at the side. The wheel scrolls it also over fields that have no focus. GUI thread.
class PageScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit PageScrollArea(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    bool eventFilter(QObject* object, QEvent* event) override;
};
