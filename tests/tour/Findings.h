#pragma once

#include <QString>
#include <QVector>

/// What the tour expected and what it found, row by row, chapter by chapter.
class Findings
{
public:
    struct Row
    {
        QString chapter;
        QString what;
        QString expected;
        QString measured;
        bool holds;
    };

    void beginChapter(const QString& title) { chapter = title; }

    /// A measured number must lie within tolerance of the expected one; NaN does not.
    void near(const QString& what, const QString& unit, double expected, double tolerance, double measured);
    /// A measured number must not exceed the limit.
    void atMost(const QString& what, const QString& unit, double limit, double measured);
    /// A text must be this one.
    void equal(const QString& what, const QString& expected, const QString& measured);
    /// Something must be so.
    void holds(const QString& what, bool held);

    const QVector<Row>& rows() const { return kept; }
    /// Whether there is anything at all, and all of it holds.
    bool allHold() const;
    /// Columns of text under each chapter's title, and a last line that counts.
    QString table() const;

private:
    void append(const QString& what, const QString& expected, const QString& measured, bool held);

    QString chapter;
    QVector<Row> kept;
};
