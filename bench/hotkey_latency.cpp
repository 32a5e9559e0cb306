// Time from a Ctrl+Alt+digit press to the restored text being served to
// another client. Needs the program running with at least three text entries
// of which the second and third newest are given on the command line:
//   bench_hotkey_latency SECOND_NEWEST THIRD_NEWEST [PRESSES]
// (bench/hotkey_latency.sh sets all that up on a private X server and bus).
// Each press goes through XTEST; the clock stops when this client, told of the
// new clipboard owner by XFixes, has read UTF8_STRING and found the text.
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
template<typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t *c, const char *name)
{
    Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::strlen(name), name), nullptr), std::free);
    return reply ? reply->atom : XCB_NONE;
}

// The next event of the wanted response type, waiting at most until the deadline.
Reply<xcb_generic_event_t> waitFor(xcb_connection_t *c, uint8_t type, Clock::time_point deadline)
{
    while (Clock::now() < deadline) {
        Reply<xcb_generic_event_t> event(xcb_poll_for_event(c), std::free);
        if (!event) {
            // The program shares the cores with this client: sleep on the connection, not in a busy loop.
            xcb_flush(c);
            pollfd fd{xcb_get_file_descriptor(c), POLLIN, 0};
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            poll(&fd, 1, int(std::max<long>(left, 0)) + 1);
            continue;
        }
        if ((event->response_type & 0x7f) == type)
            return event;
    }
    return {nullptr, std::free};
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s SECOND_NEWEST THIRD_NEWEST [PRESSES]\n", argv[0]);
        return 2;
    }
    const std::string expected[2] = {argv[1], argv[2]};  // Ctrl+Alt+1, Ctrl+Alt+2
    const int presses = argc > 3 ? std::atoi(argv[3]) : 100;

    Display *display = XOpenDisplay(nullptr);
    xcb_connection_t *c = xcb_connect(nullptr, nullptr);
    if (!display || xcb_connection_has_error(c)) {
        std::fprintf(stderr, "no X display\n");
        return 1;
    }
    const KeyCode control = XKeysymToKeycode(display, XK_Control_L), alt = XKeysymToKeycode(display, XK_Alt_L);
    const KeyCode digits[2] = {XKeysymToKeycode(display, XK_1), XKeysymToKeycode(display, XK_2)};

    xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_window_t window = xcb_generate_id(c);
    xcb_create_window(c, 0, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t clipboard = atom(c, "CLIPBOARD"), utf8 = atom(c, "UTF8_STRING"), property = atom(c, "QUILLSTASH_BENCH");
    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(c, &xcb_xfixes_id);
    free(xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0), nullptr));
    xcb_xfixes_select_selection_input(c, window, clipboard, XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    xcb_flush(c);

    std::vector<double> ms;
    int failures = 0;
    for (int i = 0; i < presses; ++i) {
        const int which = i % 2;
        while (Reply<xcb_generic_event_t>(xcb_poll_for_event(c), std::free)) {
        }
        const Clock::time_point start = Clock::now(), deadline = start + std::chrono::seconds(2);
        for (const auto &[key, down] : {std::pair{control, true}, {alt, true}, {digits[which], true},
                                        {digits[which], false}, {alt, false}, {control, false}})
            XTestFakeKeyEvent(display, key, down, CurrentTime);
        XFlush(display);

        bool served = false;
        while (!served) {
            Reply<xcb_generic_event_t> owner = waitFor(c, xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY, deadline);
            if (!owner)
                break;
            const auto *change = reinterpret_cast<xcb_xfixes_selection_notify_event_t *>(owner.get());
            xcb_convert_selection(c, window, clipboard, utf8, property, change->selection_timestamp);
            Reply<xcb_generic_event_t> notify = waitFor(c, XCB_SELECTION_NOTIFY, deadline);
            if (!notify || reinterpret_cast<xcb_selection_notify_event_t *>(notify.get())->property == XCB_NONE)
                continue;
            Reply<xcb_get_property_reply_t> text(
                xcb_get_property_reply(c, xcb_get_property(c, 1, window, property, XCB_ATOM_ANY, 0, 1 << 20), nullptr), std::free);
            served = text && std::string(static_cast<const char *>(xcb_get_property_value(text.get())),
                                         xcb_get_property_value_length(text.get())) == expected[which];
        }
        if (served)
            ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        else
            ++failures;
        // The program's tick and the next press should not always meet the same way.
        usleep(37000 + 13000 * (i % 5));
    }
    if (ms.empty()) {
        std::printf("no press was answered within 2 s\n");
        return 1;
    }
    std::sort(ms.begin(), ms.end());
    std::printf("Ctrl+Alt+1/2 press to restored text served: %zu presses, median %.2f ms, 90th %.2f ms, worst %.2f ms, best %.2f ms",
                ms.size(), ms[ms.size() / 2], ms[ms.size() * 9 / 10], ms.back(), ms.front());
    std::printf(failures ? ", %d presses not answered within 2 s\n" : "\n", failures);
    XCloseDisplay(display);
    xcb_disconnect(c);
    return failures ? 1 : 0;
}
