#include "tools/FormatG6.h"

#include <QString>

#include <algorithm>
#include <cmath>

namespace {

constexpr int digits = 6;
constexpr double smallestWithSixDigits = 1e5;
constexpr double firstWithSevenDigits = 1e6;

// Within these bounds every power of ten below is an exact double, so that the scaled value is rounded once
// and its error stays below 1e-9. The lower bound leaves one power for an estimate that is one too low.
constexpr double smallestScaled = 1e-16;
constexpr double largestScaled = 1e20;
constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// A value this close to the middle between two neighbours is left to Qt, whose rule for ties holds.
constexpr double undecided = 1e-6;

char* writeAsQt(char* out, double value)
{
    const QByteArray text = QString::number(value, 'g', digits).toLatin1();
    return std::copy(text.begin(), text.end(), out);
}

double scaledToSixDigits(double magnitude, int exponent)
{
    const int shift = digits - 1 - exponent;
    return shift >= 0 ? magnitude * powersOfTen[shift] : magnitude / powersOfTen[-shift];
}

char* writeExponentForm(char* out, const char* text, int count, int exponent)
{
    *out++ = text[0];
    if (count > 1) {
        *out++ = '.';
        out = std::copy(text + 1, text + count, out);
    }
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int size = std::abs(exponent);
    *out++ = char('0' + size / 10);
    *out++ = char('0' + size % 10);
    return out;
}

char* writeDecimalForm(char* out, const char* text, int count, int exponent)
{
    if (exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        out = std::fill_n(out, -exponent - 1, '0');
        return std::copy(text, text + count, out);
    }
    const int whole = exponent + 1;
    if (count <= whole) {
        out = std::copy(text, text + count, out);
        return std::fill_n(out, whole - count, '0');
    }
    out = std::copy(text, text + whole, out);
    *out++ = '.';
    return std::copy(text + whole, text + count, out);
}

} // namespace

char* formatG6(char* out, double value)
{
    const double magnitude = std::fabs(value);
    // Zeros, infinities and NaN go to Qt too.
    if (!(magnitude > smallestScaled && magnitude < largestScaled))
        return writeAsQt(out, value);

    // 1233 / 4096 is log10(2): the estimate is the decimal exponent or one less.
    int exponent = (std::ilogb(magnitude) * 1233) >> 12;
    double scaled = scaledToSixDigits(magnitude, exponent);
    if (scaled >= firstWithSevenDigits)
        scaled = scaledToSixDigits(magnitude, ++exponent);
    if (scaled < smallestWithSixDigits)
        return writeAsQt(out, value);

    auto number = unsigned(scaled);
    const double rest = scaled - number;
    if (std::fabs(rest - 0.5) < undecided)
        return writeAsQt(out, value);
    if (rest > 0.5)
        ++number;
    if (number == unsigned(firstWithSevenDigits)) {
        number = unsigned(smallestWithSixDigits);
        ++exponent;
    }

    char text[digits];
    for (int i = digits - 1; i >= 0; --i) {
        text[i] = char('0' + number % 10);
        number /= 10;
    }
    int count = digits;
    while (text[count - 1] == '0')
        --count;

    if (value < 0)
        *out++ = '-';
    return exponent < -4 || exponent >= digits ? writeExponentForm(out, text, count, exponent)
                                               : writeDecimalForm(out, text, count, exponent);
}
