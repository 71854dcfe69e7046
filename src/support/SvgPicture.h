#pragma once

#include <QWidget>

/// A drawing that is as sharp as the screen, whatever its resolution. GUI thread.
class SvgPicture : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString file READ file WRITE setFile)

public:
    explicit SvgPicture(QWidget* parent = nullptr);

    QString file() const { return path; }
    /// @param file path of an SVG file; one that does not exist draws nothing
    void setFile(const QString& file);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString path;
};
