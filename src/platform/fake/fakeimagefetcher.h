#pragma once

#include "platform/imagefetcher.h"

#include <QHash>
#include <QList>

// Answers fetches only when the test says so, with the picture it was given.
class FakeImageFetcher : public ImageFetcher
{
public:
    bool fetch(const QUrl &url, Done done) override
    {
        if (url.scheme() != QLatin1String("file") && url.scheme() != QLatin1String("http")
            && url.scheme() != QLatin1String("https"))
            return false;
        ++m_requests;
        m_pending.append({url, std::move(done)});
        return true;
    }

    void setPicture(const QUrl &url, const QByteArray &encoded) { m_pictures.insert(url, encoded); }
    qsizetype pendingCount() const { return m_pending.size(); }
    int requestCount() const { return m_requests; }

    // Answers every pending fetch, as the real one would on the main thread.
    void finishAll()
    {
        const auto pending = std::exchange(m_pending, {});
        for (const auto &p : pending)
            p.second(m_pictures.value(p.first));
    }

private:
    QList<std::pair<QUrl, Done>> m_pending;
    QHash<QUrl, QByteArray> m_pictures;
    int m_requests = 0;
};
