#include "graphs/WidgetGraphXY.h"

#include "app/Globals.h"
#include "graphs/ArmedTarget.h"
#include "graphs/ClickedPlace.h"
#include "graphs/PausedMark.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/MailboxComm.h"
#include "ui_WidgetGraphXY.h"

#include <QMessageBox>

#include <cmath>

namespace {

constexpr double limitPenWidth = 1.5;
constexpr double cloudScatterSize = 2;
constexpr double firstTargetScatterSize = 15;
constexpr double targetScatterSize = 6;

QCPItemRect* newLimitRectangle(QCustomPlot* plot, const QColor& colour)
{
    auto* rectangle = new QCPItemRect(plot);
    rectangle->setPen(QPen(colour, limitPenWidth));
    rectangle->setVisible(false);
    return rectangle;
}

void setHalfWidths(QCPItemRect* rectangle, double x, double y)
{
    rectangle->topLeft->setCoords(x, -y);
    rectangle->bottomRight->setCoords(-x, y);
}

} // namespace

WidgetGraphXY::WidgetGraphXY(int bpmIndex, QWidget* parent)
    : QWidget(parent), bpmIndex(bpmIndex), ui(std::make_unique<Ui::WidgetGraphXY>())
{
    ui->setupUi(this);
    plot_theme::drawPlain(ui->graph);
    new PausedMark(ui->graph);
    buildGraphs();
    buildLimits();
    buildAxes();
    plot_theme::setGradient(ui->graph, ui->graph->height());
    ui->graph->setInteractions(QCP::iRangeZoom);
    new ArmedTarget(ui->targetEnable, ui->graph, target->pen().color());

    connect(ui->resetZoomButton, SIGNAL(released()), this, SLOT(resetZoom()));
    connect(ui->graph, SIGNAL(mousePress(QMouseEvent*)), this, SLOT(graphClicked(QMouseEvent*)));

    double roiX, roiY, roiI0min, roiI0max, roc;
    configFile->readROI(&roiX, &roiY, &roiI0min, &roiI0max, &roc, bpmIndex);
    setLimits(roiX, roiY, roc / 100.0);
    resetZoom();
}

WidgetGraphXY::~WidgetGraphXY() = default;

void WidgetGraphXY::buildGraphs()
{
    cloud = new TraceGraph(ui->graph->xAxis, ui->graph->yAxis);
    cloud->setLineStyle(QCPGraph::lsNone);
    cloud->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssCross, cloudScatterSize));
    cloud->setPen(QPen(QColor(250, 250, 200, 240), 2.0));

    target = new TraceGraph(ui->graph->xAxis, ui->graph->yAxis);
    target->setLineStyle(QCPGraph::lsLine);
    target->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssCross, firstTargetScatterSize));
    target->setPen(QPen(QColor(0, 191, 250, 255), 2.0));
    target->setVisible(false);
}

void WidgetGraphXY::buildLimits()
{
    rectROI = newLimitRectangle(ui->graph, QColor(50, 250, 50, 240));
    rectROC = newLimitRectangle(ui->graph, QColor(250, 70, 70, 240));
}

void WidgetGraphXY::buildAxes()
{
    ui->graph->xAxis->setLabel(QStringLiteral("Horizontal position [um]"));
    ui->graph->yAxis->setLabel(QStringLiteral("Vertical position [um]"));
    plot_theme::whiten(ui->graph->xAxis);
    plot_theme::whiten(ui->graph->yAxis);
}

QCPDataMap* WidgetGraphXY::dataMap()
{
    return cloud->shareNewData();
}

void WidgetGraphXY::setLimits(double roiX, double roiY, double rocFraction)
{
    setHalfWidths(rectROI, roiX, roiY);
    setHalfWidths(rectROC, roiX * rocFraction, roiY * rocFraction);
    rectROI->setVisible(true);
    rectROC->setVisible(true);
}

void WidgetGraphXY::replot()
{
    ui->graph->requestRedraw();
}

void WidgetGraphXY::resetZoom()
{
    const QPointF corner = rectROC->topLeft->coords();
    const QPointF opposite = rectROC->bottomRight->coords();
    ui->graph->xAxis->setRange(opposite.x(), corner.x());
    ui->graph->yAxis->setRange(corner.y(), opposite.y());
}

void WidgetGraphXY::graphClicked(QMouseEvent* event)
{
    const QPointF place = clickedPlace(ui->graph, event);
    if (!ui->targetEnable->isChecked() || (userLevel != 1 && userLevel != 2))
        return;
    if (const LoopConfiguration* configuration = loopConfiguration(mailbox->getPIDconf())) {
        if (!isInsideLimits(*configuration, place.x(), place.y())) {
            QMessageBox::information(nullptr, QStringLiteral("Invalid setpoint"),
                                     QStringLiteral("Setpoint was set outside Region of Interest.\n\n"),
                                     QMessageBox::Ok);
            return;
        }
        sendSetpoints(*configuration, place.x(), place.y());
    }
    updateGraphXY();
    emit XYchanged();
}

bool WidgetGraphXY::isInsideLimits(const LoopConfiguration& configuration, double x, double y) const
{
    // Of the file and not of the rectangle, so that a click always meets the stored limits.
    double roiX, roiY, roiI0min, roiI0max, roc;
    configFile->readROI(&roiX, &roiY, &roiI0min, &roiI0max, &roc, bpmIndex);
    return !(configuration.clickChecksX && std::abs(x) > roiX) && !(configuration.clickChecksY && std::abs(y) > roiY);
}

void WidgetGraphXY::sendSetpoints(const LoopConfiguration& configuration, double x, double y)
{
    const auto regulatesHere = [&](int loop, int selector) { return configuration.runs(loop) && selector == bpmIndex; };
    if (regulatesHere(LoopXlf, bpmSelXlf))
        mailbox->setSetpointXlf(x);
    if (regulatesHere(LoopXhf, bpmSelXhf))
        mailbox->setSetpointXhf(0.0);
    if (regulatesHere(LoopYlf, bpmSelYlf))
        mailbox->setSetpointYlf(y);
    if (regulatesHere(LoopYhf, bpmSelYhf))
        mailbox->setSetpointYhf(0.0);
}

void WidgetGraphXY::updateGraphXY()
{
    target->setVisible(true);
    target->data()->clear();
    double x = 0, y = 0;
    mailbox->getSetpoints(&x, nullptr, &y, nullptr);
    if (const LoopConfiguration* configuration = loopConfiguration(mailbox->getPIDconf()))
        drawMarker(*configuration, x, y);
    ui->graph->requestRedraw();
}

void WidgetGraphXY::drawMarker(const LoopConfiguration& configuration, double x, double y)
{
    const bool feedsX = bpmIndex == bpmSelXlf;
    const bool feedsY = bpmIndex == bpmSelYlf;
    switch (configuration.marker) {
    case SetpointMarker::VerticalLine:
        if (feedsX)
            drawVerticalLine(x);
        break;
    case SetpointMarker::Cross:
        if (feedsX && feedsY) {
            target->addData(x, y);
            target->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssCross, targetScatterSize));
        } else if (feedsX) {
            drawVerticalLine(x);
        } else if (feedsY) {
            drawHorizontalLine(y);
        }
        break;
    case SetpointMarker::HorizontalLine:
        if (feedsY)
            drawHorizontalLine(y);
        break;
    case SetpointMarker::None:
        break;
    }
}

void WidgetGraphXY::drawVerticalLine(double x)
{
    const double halfLength = bpmScaleY[bpmIndex];
    target->addData(x, -halfLength);
    target->addData(x, halfLength);
    target->setScatterStyle(QCPScatterStyle::ssNone);
}

void WidgetGraphXY::drawHorizontalLine(double y)
{
    const double halfLength = bpmScaleX[bpmIndex];
    target->addData(-halfLength, y);
    target->addData(halfLength, y);
    target->setScatterStyle(QCPScatterStyle::ssNone);
}

void WidgetGraphXY::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    plot_theme::setGradient(ui->graph, ui->graph->height());
}
