#pragma once

#include <QTest>
#include <QWidget>

/// Tells when the window that holds it has been painted: a window paints all that is due in one pass.
class PaintingMarker : public QWidget
{
public:
    explicit PaintingMarker(QWidget* parent) : QWidget(parent) { setMinimumSize(10, 10); }

    /// Lets everything happen that is due now, painting too. The second pass takes what the first has asked
    /// for.
    /// @return whether the window was painted
    bool settle()
    {
        for (int pass = 0; pass < 2; ++pass) {
            painted = false;
            update();
            if (!QTest::qWaitFor([this] { return painted; }))
                return false;
            QCoreApplication::processEvents();
        }
        return true;
    }

protected:
    void paintEvent(QPaintEvent*) override { painted = true; }

private:
    bool painted = false;
};
