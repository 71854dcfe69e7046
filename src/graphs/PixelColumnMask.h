#pragma once

#include <QRect>
#include <QVector>

#include <algorithm>
#include <cstdint>
#include <vector>

/// Which pixels of a rectangle are inked: a row of bits for each column.
class PixelColumnMask
{
public:
    explicit PixelColumnMask(const QRect& area)
        : area(area), wordsPerColumn((area.height() + wordBits - 1) / wordBits),
          words(std::size_t(std::max(area.width(), 0)) * std::size_t(wordsPerColumn))
    {
    }

    /// @param endRow behind the last row
    void add(int column, int firstRow, int endRow)
    {
        Word* ink = columnInk(column);
        const int first = firstRow - area.top();
        const int last = endRow - 1 - area.top();
        const Word head = ~Word(0) << (first % wordBits);
        const Word tail = ~Word(0) >> (wordBits - 1 - last % wordBits);
        const int firstWord = first / wordBits;
        const int lastWord = last / wordBits;
        if (firstWord == lastWord) {
            ink[firstWord] |= head & tail;
            return;
        }
        ink[firstWord] |= head;
        std::fill(ink + firstWord + 1, ink + lastWord, ~Word(0));
        ink[lastWord] |= tail;
    }

    /// One rectangle for each run of inked pixels of a column.
    QVector<QRect> runs()
    {
        QVector<QRect> found;
        for (int column = area.left(); column <= area.right(); ++column) {
            const Word* ink = columnInk(column);
            for (int row = nextRow(ink, 0, 0); row < area.height();) {
                const int end = nextRow(ink, row, ~Word(0));
                found.append(QRect(column, area.top() + row, 1, end - row));
                row = nextRow(ink, end, 0);
            }
        }
        return found;
    }

private:
    using Word = std::uint64_t;
    static constexpr int wordBits = 64;

    Word* columnInk(int column)
    {
        return words.data() + std::size_t(column - area.left()) * std::size_t(wordsPerColumn);
    }

    /// Next row from this one on whose bit differs from those of the pattern, or the height.
    int nextRow(const Word* ink, int row, Word pattern) const
    {
        while (row < area.height()) {
            const Word differing = (ink[row / wordBits] ^ pattern) >> (row % wordBits);
            if (differing)
                return std::min(row + __builtin_ctzll(differing), area.height());
            row = (row / wordBits + 1) * wordBits;
        }
        return area.height();
    }

    QRect area;
    int wordsPerColumn;
    std::vector<Word> words;
};
