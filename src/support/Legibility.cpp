#include "support/Legibility.h"

#include <QApplication>

namespace {

/// Share of the text's colour in that of a locked field; the rest is the background's.
constexpr double lockedShare = 0.7;
constexpr double oldShare = 0.4;

QColor mixed(const QColor& text, const QColor& background, double share)
{
    const auto channel = [share](int a, int b) { return qRound(a * share + b * (1 - share)); };
    return QColor(channel(text.red(), background.red()), channel(text.green(), background.green()),
                  channel(text.blue(), background.blue()));
}

QPalette valuePalette(double share)
{
    const QPalette common = QApplication::palette();
    const QColor background = common.color(QPalette::Active, QPalette::Window);
    const QColor text = mixed(common.color(QPalette::Active, QPalette::WindowText), background, share);
    // What is not set here stays with the widget's surroundings.
    QPalette palette;
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, background);
    return palette;
}

} // namespace

QPalette legibility::liveValue()
{
    return valuePalette(1);
}

QPalette legibility::oldValue()
{
    return valuePalette(oldShare);
}

void legibility::keepLockedFieldsLegible()
{
    for (const char* className : {"QAbstractSpinBox", "QLineEdit", "QComboBox"}) {
        QPalette palette = QApplication::palette(className);
        for (const auto& [text, background] :
             {std::pair{QPalette::Text, QPalette::Base}, std::pair{QPalette::ButtonText, QPalette::Button}})
            palette.setColor(QPalette::Disabled, text,
                             mixed(palette.color(QPalette::Active, text), palette.color(QPalette::Disabled, background),
                                   lockedShare));
        QApplication::setPalette(palette, className);
    }
}
