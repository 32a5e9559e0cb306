#pragma once

class CaptureLoop;

// Keeps the tick from running while it lives, then puts back what was there.
// Qt's modal loops (panels, alerts, the preferences window) go on firing the
// tick's timer, and the tick must not run under them: an auto-save could
// write the file a Save As panel is about to replace.
class TickPause
{
public:
    explicit TickPause(CaptureLoop &capture);
    ~TickPause();
    TickPause(const TickPause &) = delete;
    TickPause &operator=(const TickPause &) = delete;

private:
    CaptureLoop &m_capture;
    bool m_wasPaused;
};
