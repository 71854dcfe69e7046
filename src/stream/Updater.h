#pragma once

#include "hardware/PidStatusMetaType.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"
#include "stream/PlotData.h"
#include "stream/SignalTable.h"
#include "stream/Spectrum.h"

#include <QObject>

/// Turns the display stream into what the screens plot: once a second it fetches one window of records, rewrites
/// the data of every registered trace, computes one spectrum and tells the graphs to redraw. Which signal goes to which
/// trace, signalTable says. GUI thread only.
class Updater : public QObject
{
    Q_OBJECT

public:
    Updater();
    ~Updater() override;

    /// Registers the data of one trace, owned by its graph. Null takes it out again.
    /// @param kind a GraphKind; others, and channels that a kind does not have, register nothing
    /// @param channel trace of the kind, from 0; unused for kinds of one trace
    void setGraphData(int kind, int channel, QCPDataMap* map);

    /// @param slot slot of the display record that the spectrum is taken of
    void setFFTchannel(int slot);

    /// The newest record of the window that was fetched last; null before the first one.
    const DisplayRecord* newestRecord() const;

    /// What updateIonBars() last read, one record an amplifier; all zero before.
    AmplifierStatus ionbarStatus[2] = {};
    /// Whether the last reading of an amplifier's status succeeded. A record stays as it was where it did not.
    bool ionbarStatusRead[2] = {true, true};
    /// Freezes the graphs; the amplifier status goes on.
    bool paused = false;
    QCPDataMap* dataXY[2] = {};
    QCPDataMap* dataFFT = nullptr;
    QCPDataMap* dataCurrents[2][traceCount(KindCurrents1)] = {};
    QCPDataMap* dataDAC[traceCount(KindDAC)] = {};
    QCPDataMap* dataPosX[traceCount(KindPosX)] = {};
    QCPDataMap* dataPosY[traceCount(KindPosY)] = {};
    QCPDataMap* dataInt[traceCount(KindInt)] = {};
    void* buffer;
    /// Points of the transform.
    int fftLength = 1024;
    bool removeDC = false;
    int fftChannel = 1;

signals:
    void replotGraphs();
    void replotDACgraph();
    void PIDstatusChanged(PID_Status_Type PID_status);

public slots:
    void updateGraphs();
    void updateIonBars();
    void ChangeFFTremoveDC(bool removeDC);

private:
    QCPDataMap** registered(int kind, int channel);
    void fetchWindow(int records);
    void decodeTraces(int records);
    void decodeClouds(int records);
    void transform(int records);

    /// Records of the window that was fetched last.
    int heldRecords = 0;
};
