#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class WidgetRoc;
}

/// Fields of the region of interest, the region of confidence and the beam-off threshold of one BPM. It has
/// no logic of its own: the window that holds it reads and fills its form.
class WidgetRoc : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetRoc(QWidget* parent = nullptr);
    ~WidgetRoc() override;

    std::unique_ptr<Ui::WidgetRoc> ui;
};
