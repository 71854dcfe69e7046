#pragma once

#include <memory>

struct xcb_connection_t;

/// Times the start of the program, on the display that the environment names. It holds a connection to the
/// display, so that a server that resets itself when its last client leaves does not do so between two
/// starts.
class ProgramStart
{
public:
    explicit ProgramStart(const char* program);

    /// From the start of the process to the mapping of its first window. The program is ended as soon as it
    /// is there.
    /// @return seconds; negative when no window came within ten seconds
    double seconds();

    /// From the start of the process to the first picture in its first window, which must stand at the corner of
    /// the display, as it does without a window manager. The program is ended as soon as it is there.
    /// @return seconds; negative when no picture came within ten seconds
    double secondsToPicture();

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t* connection) const;
    };

    double secondsUntil(bool (ProgramStart::*sign)(int));
    bool waitForWindow(int patienceMs);
    bool waitForPicture(int patienceMs);
    bool edgeIsBlack();

    const char* program;
    std::unique_ptr<xcb_connection_t, Disconnect> connection;
};
