#pragma once

#include <QByteArray>
#include <QUrl>

#include <functional>

// Loads the picture an address names, off the main thread.
class ImageFetcher
{
public:
    using Done = std::function<void(const QByteArray &encodedPicture)>;

    virtual ~ImageFetcher() = default;

    // False, without calling done, for an address that is never fetched.
    // Otherwise starts the load and later calls done on the main thread with
    // the picture's encoded bytes, or with a null array when the load failed,
    // ran out of time, was too large or was not a picture.
    virtual bool fetch(const QUrl &url, Done done) = 0;
};
