#include "qrngl/frame/linux/ExposeForwarder.h"

#include <xcb/xcb.h>

#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace qrngl {

namespace {

// XCB reports protocol errors to the caller, never through Xlib's process-wide handler, so a
// window destroyed under the watcher costs an ignored reply and nothing else.
struct Watcher {
    std::mutex calls;                           // one add or remove at a time
    std::mutex mutex;                           // the map, between the callers and the thread
    std::map<xcb_window_t, xcb_window_t> hosts; // child to host
    xcb_connection_t* connection = nullptr;
    std::thread thread;
    int wake[2] = {-1, -1};

    void run();
    void forward(const xcb_expose_event_t& expose);
    void stop(std::unique_lock<std::mutex>& lock);
    bool select(xcb_window_t child, uint32_t mask);
    void nudge() {
        const char c = 0;
        (void)!::write(wake[1], &c, 1);
    }
};

// Never destroyed: a context still open at exit leaves the thread to the process's end.
Watcher& watcher() {
    static Watcher* w = new Watcher;
    return *w;
}

void Watcher::forward(const xcb_expose_event_t& expose) {
    xcb_window_t host = 0;
    {
        std::lock_guard<std::mutex> lock(mutex);
        const auto found = hosts.find(expose.window);
        if (found == hosts.end())
            return;
        host = found->second;
    }
    // The child sits at the host's origin, so the rectangle holds in the host as it is.
    char event[32] = {};
    xcb_expose_event_t sent = expose;
    sent.response_type = XCB_EXPOSE;
    sent.window = host;
    std::memcpy(event, &sent, sizeof sent);
    xcb_send_event(connection, 0, host, XCB_EVENT_MASK_EXPOSURE, event);
    xcb_flush(connection);
}

void Watcher::run() {
    pollfd fds[2] = {{xcb_get_file_descriptor(connection), POLLIN, 0}, {wake[0], POLLIN, 0}};
    for (;;) {
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
            const uint8_t type = event->response_type & 0x7f;
            if (type == XCB_EXPOSE) {
                forward(*reinterpret_cast<xcb_expose_event_t*>(event));
            } else if (type == XCB_DESTROY_NOTIFY) {
                std::lock_guard<std::mutex> lock(mutex);
                hosts.erase(reinterpret_cast<xcb_destroy_notify_event_t*>(event)->window);
            }
            std::free(event);
        }
        if (xcb_connection_has_error(connection))
            return;
        poll(fds, 2, -1);
        if (fds[1].revents & POLLIN) {
            char drained[16];
            (void)!::read(wake[0], drained, sizeof drained);
            std::lock_guard<std::mutex> lock(mutex);
            if (hosts.empty())
                return;
        }
    }
}

bool Watcher::select(xcb_window_t child, uint32_t mask) {
    xcb_void_cookie_t cookie =
        xcb_change_window_attributes_checked(connection, child, XCB_CW_EVENT_MASK, &mask);
    xcb_generic_error_t* error = xcb_request_check(connection, cookie);
    std::free(error);
    // Checking may have read events off the socket, where poll no longer sees them.
    nudge();
    return !error;
}

void Watcher::stop(std::unique_lock<std::mutex>& lock) {
    nudge();
    lock.unlock();
    thread.join();
    lock.lock();
    xcb_disconnect(connection);
    connection = nullptr;
    ::close(wake[0]);
    ::close(wake[1]);
    wake[0] = wake[1] = -1;
}

} // namespace

bool ExposeForwarder::add(Display* display, Window child, Window host) {
    if (!display || !child || !host || child == host)
        return false;
    Watcher& w = watcher();
    std::lock_guard<std::mutex> serial(w.calls);
    std::unique_lock<std::mutex> lock(w.mutex);
    if (!w.connection) {
        xcb_connection_t* connection = xcb_connect(DisplayString(display), nullptr);
        if (xcb_connection_has_error(connection) || ::pipe(w.wake) != 0) {
            xcb_disconnect(connection);
            return false;
        }
        w.connection = connection;
        w.thread = std::thread([&w] { w.run(); });
    }
    w.hosts[static_cast<xcb_window_t>(child)] = static_cast<xcb_window_t>(host);
    lock.unlock();
    if (w.select(static_cast<xcb_window_t>(child),
                 XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY))
        return true;
    lock.lock();
    w.hosts.erase(static_cast<xcb_window_t>(child));
    if (w.hosts.empty())
        w.stop(lock);
    return false;
}

void ExposeForwarder::remove(Window child) {
    Watcher& w = watcher();
    std::lock_guard<std::mutex> serial(w.calls);
    std::unique_lock<std::mutex> lock(w.mutex);
    if (!w.connection)
        return;
    // A child already destroyed has left the map on its own.
    if (w.hosts.erase(static_cast<xcb_window_t>(child))) {
        lock.unlock();
        w.select(static_cast<xcb_window_t>(child), XCB_EVENT_MASK_NO_EVENT);
        lock.lock();
    }
    if (w.hosts.empty())
        w.stop(lock);
}

} // namespace qrngl
