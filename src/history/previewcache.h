#pragma once

#include "history/contents.h"

#include <QCache>
#include <QFont>
#include <QImage>

// The rendered previews of the entries that are being shown. Entries keep no
// bitmap of their own; a long history would otherwise hold one per entry.
// A preview is rendered again when its entry's imageGeneration() moves or
// the shared drawing font changes.
class PreviewCache
{
public:
    static constexpr qsizetype defaultMaxBytes = 32 * 1024 * 1024;

    explicit PreviewCache(qsizetype maxBytes = defaultMaxBytes);
    PreviewCache(const PreviewCache &) = delete;
    PreviewCache &operator=(const PreviewCache &) = delete;

    QImage preview(const Entry &entry);
    void clear();

    qsizetype totalBytes() const { return m_cache.totalCost(); }
    qsizetype maxBytes() const { return m_cache.maxCost(); }

private:
    struct Rendered
    {
        quint64 generation = 0;
        QImage image;
    };

    // Generations are unique across entries, so an address reused by a new
    // entry never hits the old entry's picture.
    QCache<const contents *, Rendered> m_cache;
    QFont m_font;
    bool m_hasFont = false;
};
