#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The records that cross the device files of the acquisition board, beside their paths and requests.

constexpr char streamDevicePath[] = "/dev/kora_dma_displ";
constexpr char amplifierDevicePath[2][sizeof("/dev/kora_ionbar0")] = {"/dev/kora_ionbar0", "/dev/kora_ionbar1"};
constexpr char outputDevicePath[] = "/dev/kora_anvolt0";

/// ioctl requests, type letter 'B'; the size field holds the size of the pointer that is passed.
constexpr unsigned long requestAmplifierStatus = 0x80084214;
constexpr unsigned long requestCurrents = 0x8008421e;
constexpr unsigned long requestSetOutputs = 0x40084228;

/// State of an amplifier's high voltage: the low four bits of its status word.
enum class HighVoltageState
{
    Off = 0,
    On = 1,
    Rising = 3,
    Falling = 5
};

/// Amplifier status as the driver fills it: 64 packed bytes, so that the doubles lie at addresses that are not
/// multiples of eight. The accessors copy the bytes out and may be used at any address.
struct AmplifierStatus
{
    unsigned char bytes[64];

    float highVoltageMicroamps() const { return field<float>(12); }
    float highVoltageVolts() const { return field<float>(16); }
    int highVoltageCode() const { return int(field<std::uint32_t>(20) & 0xf); }
    /// @param channel 0 to 3; @return A
    double current(int channel) const { return field<double>(28 + 8 * (3 - channel)); }

    template <typename T>
    T field(std::size_t offset) const
    {
        T value;
        std::memcpy(&value, bytes + offset, sizeof value);
        return value;
    }
    template <typename T>
    void setField(std::size_t offset, T value)
    {
        std::memcpy(bytes + offset, &value, sizeof value);
    }
};
static_assert(sizeof(AmplifierStatus) == 64);

/// Present currents of one amplifier, channel c (0 to 3) at position 3 - c, A.
struct CurrentRecord
{
    double amps[4];

    double channel(int c) const { return amps[3 - c]; }
};
static_assert(sizeof(CurrentRecord) == 32);

/// Four output voltages as the output unit takes them. The driver reads 36 bytes.
struct OutputRecord
{
    double volts[4] = {0, 0, 0, 0}; ///< outputs 0 to 3, V
    std::int32_t flag = 1;          ///< always 1

    static bool hasOutput(int output) { return output >= 0 && output < 4; }
    /// A number that is no output of the unit, as a settings file may hold, sets nothing.
    void set(int output, double value)
    {
        if (hasOutput(output))
            volts[output] = value;
    }
};
static_assert(offsetof(OutputRecord, flag) == 32);
