#pragma once

#include <QDialog>

#include <memory>

#include <armadillo>

class QAbstractButton;
class QComboBox;
class QDoubleSpinBox;

namespace Ui {
class WindowFiltparams;
}

/// Designs the four position filters, loads them into the hardware and remembers type and cut-offs in the
/// settings file. A filter is addressed by band (0 low frequency, 1 high frequency) and axis (0 X, 1 Y). GUI
/// thread only.
class WindowFiltparams : public QDialog
{
    Q_OBJECT

public:
    explicit WindowFiltparams(QWidget* parent);
    ~WindowFiltparams() override;

    /// Brings level and fields up to date and shows the window.
    void showWindow();
    /// Fills the fields from the settings file. A stored full-band filter reaches the hardware here already.
    void loadFilterSettings();
    /// Writes all four filters to the settings file.
    void saveFilterSettings();
    /// @return 1 if the fields of the filter differ from the settings file, else 0
    int filterChanged(int band, int axis);
    /// Computes the coefficients of the filter from its fields; a full-band filter keeps those that it has.
    void designFilter(int band, int axis);
    /// Sends the nine coefficients as they stand now, also those that were never designed.
    /// @return sum of the library's results
    int writeFilterCoefficients(int band, int axis);
    /// Makes the written coefficients act.
    void commitFilter(int band, int axis);

public slots:
    void updateFilterXlf();
    void updateFilterYlf();
    /// Runs at each show; no signal is connected to it, so that a login acts on the next show.
    void checkUserLevel();
    void buttonPressed(QAbstractButton* button);

private:
    /// Fields and coefficients of one filter. High is null for the low-frequency band.
    struct Filter
    {
        QComboBox* type;
        QDoubleSpinBox* low;
        QDoubleSpinBox* high;
        arma::rowvec* a;
        arma::rowvec* b;
    };
    Filter filter(int band, int axis);
    void applyType(int axis, int type, QWidget* panel);

    std::unique_ptr<Ui::WindowFiltparams> ui;
    /// Design rate, Hz, and period, s. The loops are designed for 10 kHz whatever rate they run at.
    double fs = 10000.0;
    double Ts = 0.0001;
    arma::rowvec aXlf = {1, 2, 3, 4, 5};
    arma::rowvec bXlf = {1, 2, 3, 4, 5};
    arma::rowvec aXhf = {1, 2, 3, 4, 5};
    arma::rowvec bXhf = {1, 2, 3, 4, 5};
    arma::rowvec aYlf = {1, 2, 3, 4, 5};
    arma::rowvec bYlf = {1, 2, 3, 4, 5};
    arma::rowvec aYhf = {1, 2, 3, 4, 5};
    arma::rowvec bYhf = {1, 2, 3, 4, 5};
};
