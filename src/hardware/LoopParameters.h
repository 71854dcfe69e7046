#pragma once

/// The ten parameters of one control loop, as fields, file and control library have them: plain numbers that are
/// neither checked nor scaled.
struct LoopParameters
{
    double Freq = 0; ///< averaged rate, Hz
    double Kp = 0;
    double Ki = 0;
    double Kd = 0;
    double emin = 0; ///< smaller errors count as none
    double Imax = 0;
    double Omin = 0;
    double Omax = 0;
    double Ogain = 0;
    double Offset = 0; ///< V
};

/// A parameter and its key in the settings file.
struct LoopParameter
{
    const char* key;
    double LoopParameters::*value;
};

/// In the order of every list of the ten.
constexpr LoopParameter loopParameters[] = {
    {"Freq", &LoopParameters::Freq},     {"Kp", &LoopParameters::Kp},     {"Ki", &LoopParameters::Ki},
    {"Kd", &LoopParameters::Kd},         {"emin", &LoopParameters::emin}, {"Imax", &LoopParameters::Imax},
    {"Omin", &LoopParameters::Omin},     {"Omax", &LoopParameters::Omax}, {"Ogain", &LoopParameters::Ogain},
    {"Offset", &LoopParameters::Offset},
};
static_assert(sizeof(LoopParameters) == sizeof(loopParameters) / sizeof(loopParameters[0]) * sizeof(double));
