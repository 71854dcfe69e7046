#pragma once

#include <QHash>
#include <QImage>
#include <QWidget>

#include <algorithm>
#include <cmath>

/// How well something is seen.
namespace contrast {

inline double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// Ratio of luminances as accessibility rules define it: 1 for equal colours, 21 for black on white.
inline double ratio(const QColor& a, const QColor& b)
{
    const double x = luminance(a) + 0.05;
    const double y = luminance(b) + 0.05;
    return std::max(x, y) / std::min(x, y);
}

/// The strongest ratio against the commonest colour in the middle of a widget as it is painted, frame left out.
inline double ofPicture(QWidget* widget)
{
    constexpr int frame = 4;
    const QImage picture = widget->grab(widget->rect().adjusted(frame, frame, -frame, -frame)).toImage();
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    QRgb background = 0;
    for (auto colour = counts.begin(); colour != counts.end(); ++colour) {
        if (colour.value() > counts.value(background))
            background = colour.key();
    }
    double strongest = 1;
    for (auto colour = counts.begin(); colour != counts.end(); ++colour)
        strongest = std::max(strongest, ratio(QColor(colour.key()), QColor(background)));
    return strongest;
}

} // namespace contrast
