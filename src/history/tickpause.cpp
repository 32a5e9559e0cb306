#include "history/tickpause.h"

#include "history/captureloop.h"

TickPause::TickPause(CaptureLoop &capture)
    : m_capture(capture)
    , m_wasPaused(capture.isPaused())
{
    m_capture.setPaused(true);
}

TickPause::~TickPause()
{
    m_capture.setPaused(m_wasPaused);
}
