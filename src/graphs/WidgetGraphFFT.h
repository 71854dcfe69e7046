#pragma once

#include "stream/PlotData.h"

#include <QWidget>

#include <memory>

class QMouseEvent;
class TraceGraph;

namespace Ui {
class WidgetGraphFFT;
}

/// The amplitude spectrum of one signal of the newest window. Updater computes it and holds its parameters, which this
/// widget sets: a choice shows at the next update. Until a length is picked the box shows 64 while Updater's own
/// start value is used. GUI thread only.
class WidgetGraphFFT : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetGraphFFT(QWidget* parent);
    ~WidgetGraphFFT() override;

    /// Makes new empty data for the trace, owned by the plot, and returns it for registration with Updater.
    QCPDataMap* dataMap();

public slots:
    void replot();

private slots:
    void xAxesChanged(QString str);
    void yAxesChanged(QString str);
    void fftLengthChanged(QString str);
    void graphClicked(QMouseEvent* event);
    void fftSelectorChanged(QString selector);
    void fitTicks();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildAxes();
    void connectAll();

    std::unique_ptr<Ui::WidgetGraphFFT> ui;
    TraceGraph* trace;
};
