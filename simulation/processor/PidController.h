#pragma once

namespace kora::simulation {

/// Gains and limits of one controller; position errors in micrometres, outputs in volts.
struct PidGains
{
    double kp = 0;   ///< V/um
    double ki = 0;   ///< V/(um s)
    double kd = 0;   ///< V s/um
    double emin = 0; ///< um; a smaller error counts as none
    double imax = 0; ///< V; largest magnitude of the integral term
    double omin = -12;
    double omax = 12;
    double ogain = 1;
};

/// One control loop: averages `window` samples of the position, and then once
///   e = setpoint - average, and 0 where |e| < emin
///   I = clamp(I + ki * e * T, -imax, imax), T the time of one window
///   action = kp * e + I + kd * (e - previous e) / T
///   output = clamp(ogain * action + offset, omin, omax)
/// The output is held in between, and the action is kept while the loop does not run.
class PidController
{
public:
    /// @return false when a value is NaN, which changes nothing
    bool setGains(const PidGains& values);
    bool setOffset(double volts);
    /// @param samples 1 or more; @return false for fewer, which changes nothing
    bool setWindow(int samples);
    bool setSetpoint(double micrometres);
    double setpoint() const { return target; }

    /// Forgets integral and action, so that the output goes to the offset.
    void reset();
    /// Gives up a window that has begun; the next one starts afresh and without a derivative.
    void pause();
    /// One sample at the loop rate. @param period time of one sample, s
    void sample(double micrometres, double period);

    double output() const { return volts; }

private:
    void regulate(double average, double period);
    void updateOutput();

    PidGains gains;
    double offset = 0;
    int window = 1;
    double target = 0;

    int collected = 0;
    double sum = 0;
    bool hasPrevious = false;
    double previousError = 0;
    double integral = 0;
    double action = 0;
    double volts = 0;
};

} // namespace kora::simulation
