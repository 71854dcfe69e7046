#include "ProgramStart.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

#include <poll.h>
#include <xcb/xcb.h>

#include <cstdlib>

ProgramStart::ProgramStart(const char* program) : program(program), connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(connection.get()))
        return;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(), screen->root, XCB_CW_EVENT_MASK, &events);
    // A round trip: what is started after it cannot map a window unheard.
    std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
}

double ProgramStart::seconds()
{
    return secondsUntil(&ProgramStart::waitForWindow);
}

double ProgramStart::secondsToPicture()
{
    return secondsUntil(&ProgramStart::waitForPicture);
}

double ProgramStart::secondsUntil(bool (ProgramStart::*sign)(int))
{
    if (xcb_connection_has_error(connection.get()))
        return -1.0;
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(QString::fromLocal8Bit(program), QStringList());
    const bool came = (this->*sign)(10000);
    const double elapsed = double(timer.nsecsElapsed()) * 1e-9;
    process.kill();
    process.waitForFinished();
    return came ? elapsed : -1.0;
}

bool ProgramStart::waitForPicture(int patienceMs)
{
    QElapsedTimer waiting;
    waiting.start();
    if (!waitForWindow(patienceMs))
        return false;
    while (edgeIsBlack()) {
        if (waiting.elapsed() > patienceMs)
            return false;
        QThread::usleep(500);
    }
    return true;
}

/// The empty display of a virtual server is black, and so is a window without a picture.
bool ProgramStart::edgeIsBlack()
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    xcb_get_image_reply_t* image = xcb_get_image_reply(
        connection.get(), xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 400, 10, 1, 1, ~0u),
        nullptr);
    if (!image)
        return true;
    const std::uint8_t* pixel = xcb_get_image_data(image);
    const bool black = pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0;
    std::free(image);
    return black;
}

bool ProgramStart::waitForWindow(int patienceMs)
{
    QElapsedTimer waiting;
    waiting.start();
    while (waiting.elapsed() < patienceMs) {
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection.get())) {
            const bool mapped = (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
            std::free(event);
            if (mapped)
                return true;
        }
        pollfd readable = {xcb_get_file_descriptor(connection.get()), POLLIN, 0};
        ::poll(&readable, 1, patienceMs - int(waiting.elapsed()));
    }
    return false;
}

void ProgramStart::Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}
