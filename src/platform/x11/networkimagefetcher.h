#pragma once

#include "platform/imagefetcher.h"

#include <QObject>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches pictures from file: addresses, and from http(s) addresses whose path
// names a picture, within a time and a size limit. Lives on the main thread.
class NetworkImageFetcher : public QObject, public ImageFetcher
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultTimeLimit{10'000};
    static constexpr qint64 defaultSizeLimit = 16 * 1024 * 1024;

    explicit NetworkImageFetcher(QObject *parent = nullptr,
                                 std::chrono::milliseconds timeLimit = defaultTimeLimit,
                                 qint64 sizeLimit = defaultSizeLimit);
    ~NetworkImageFetcher() override;

    bool fetch(const QUrl &url, Done done) override;

    // Whether fetch() would load this address at all.
    static bool isFetchable(const QUrl &url);

private:
    void fetchFile(const QString &path, Done done);
    void fetchRemote(const QUrl &url, Done done);
    // Checks the bytes off the main thread and hands the result to done.
    void finishWithBytes(QByteArray bytes, Done done);

    QNetworkAccessManager *m_network = nullptr;
    std::chrono::milliseconds m_timeLimit;
    qint64 m_sizeLimit;
};
