#pragma once

#include <QIcon>
#include <QWidget>

class QSvgRenderer;

/// A status lamp, drawn from the pictures below :/resources/. Only round lamps in red, green, yellow, grey
/// and purple are delivered; every other combination draws nothing. GUI thread.
class QLed : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool value READ value WRITE setValue DESIGNABLE true)
    Q_PROPERTY(ledColor onColor READ onColor WRITE setOnColor DESIGNABLE true)
    Q_PROPERTY(ledColor offColor READ offColor WRITE setOffColor DESIGNABLE true)
    Q_PROPERTY(ledShape shape READ shape WRITE setShape DESIGNABLE true)

public:
    // Of type int, since a property can carry any number; what is no lamp draws nothing.
    enum ledColor : int
    {
        Red = 0,
        Green = 1,
        Yellow = 2,
        Grey = 3,
        Orange = 4,
        Purple = 5,
        Blue = 6
    };
    Q_ENUM(ledColor)
    enum ledShape : int
    {
        Circle = 0,
        Square = 1,
        Triangle = 2,
        Rounded = 3
    };
    Q_ENUM(ledShape)

    explicit QLed(QWidget* parent = nullptr);
    ~QLed() override;

    /// A lamp as an icon that keeps its colour where it is disabled. Empty for a lamp that is not delivered.
    static QIcon icon(ledShape shape, ledColor color);

    bool value() const { return lamp.value; }
    ledColor onColor() const { return lamp.onColor; }
    ledColor offColor() const { return lamp.offColor; }
    ledShape shape() const { return lamp.shape; }

public slots:
    void setValue(bool value);
    void setOnColor(ledColor color);
    void setOffColor(ledColor color);
    void setShape(ledShape shape);
    void toggleValue();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // A structure of its own, since the getters have the names of the members.
    struct Lamp
    {
        bool value = false;
        ledColor onColor = Red;
        ledColor offColor = Grey;
        ledShape shape = Circle;
    };

    Lamp lamp;
    QSvgRenderer* renderer;
};
