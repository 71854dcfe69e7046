// The least program of its kind: one window that holds one empty plot.

#include <QApplication>

#include <qcustomplot.h>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCustomPlot plot;
    plot.resize(1280, 800);
    plot.move(0, 0);
    plot.show();
    return application.exec();
}
