#pragma once

#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedock.h"
#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakenoticeservice.h"
#include "platform/fake/fakesoundplayer.h"
#include "platform/fake/fakeuserdefaults.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QStringList>

// The settings, notices, sounds and recording switch over desktop fakes, wired as the controller wires them.
struct RecordingRig
{
    RecordingRig() { notices.setUp(); }

    // Every sound started so far, sorted: each plays on a thread of its own, in no fixed order.
    QStringList sounds()
    {
        eventTimer.waitForIdle();
        QStringList played = soundPlayer.played();
        played.sort();
        return played;
    }
    // Every notice sent so far, as "title|description|name".
    QStringList noticesSent() const
    {
        QStringList fields;
        for (const auto &n : noticeService.sent())
            fields << n.title + u'|' + n.description + u'|' + n.notificationName;
        return fields;
    }

    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    ApplicationRegistries registries{defaults, loginItems, QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"))};
    FakeNoticeService noticeService;
    FakeClock clock;
    FakeDock dock;
    Notices notices{noticeService, clock, dock, registries};
    FakeSoundPlayer soundPlayer;
    EventTimer eventTimer{soundPlayer, [this] { return registries.isSoundEnable(); }};
    RecordingSwitch recording{registries, notices, eventTimer};
};
