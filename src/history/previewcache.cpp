#include "history/previewcache.h"

PreviewCache::PreviewCache(qsizetype maxBytes)
    : m_cache(maxBytes)
{
}

QImage PreviewCache::preview(const Entry &entry)
{
    if (!entry)
        return {};
    if (contents::hasContentsFont() != m_hasFont || (m_hasFont && contents::contentsFont() != m_font)) {
        m_cache.clear();
        m_hasFont = contents::hasContentsFont();
        m_font = contents::contentsFont();
    }

    if (const Rendered *cached = m_cache.object(entry.get()); cached && cached->generation == entry->imageGeneration())
        return cached->image;

    auto rendered = new Rendered{entry->imageGeneration(), entry->image()};
    const QImage image = rendered->image;
    // An empty picture still costs its bookkeeping; cost 0 would keep it forever.
    const qsizetype cost = std::max<qsizetype>(image.sizeInBytes(), 1);
    m_cache.insert(entry.get(), rendered, cost);
    return image;
}

void PreviewCache::clear()
{
    m_cache.clear();
}
