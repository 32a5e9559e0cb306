#include "platform/x11/networkimagefetcher.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QImageReader>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <memory>

Q_LOGGING_CATEGORY(lcImageFetch, "quillstash.imagefetch", QtWarningMsg)

namespace {

const QStringList pictureExtensions{
    QStringLiteral(".png"), QStringLiteral(".jpg"),  QStringLiteral(".jpeg"),
    QStringLiteral(".gif"), QStringLiteral(".bmp"),  QStringLiteral(".tif"),
    QStringLiteral(".tiff"), QStringLiteral(".webp"), QStringLiteral(".svg"),
    QStringLiteral(".ico"),
};

// The bytes when they decode as a picture, else a null array.
QByteArray decodable(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    if (reader.read().isNull())
        return {};
    return bytes;
}

QByteArray readPictureFile(const QString &path, qint64 sizeLimit)
{
    // Only regular files: a FIFO or a device would hold a pool thread forever.
    if (!QFileInfo(path).isFile()) {
        qCDebug(lcImageFetch) << path << "is not a regular file";
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCDebug(lcImageFetch) << "Cannot read" << path << file.errorString();
        return {};
    }
    // Read one byte past the limit: the size a file reports can change under us.
    const QByteArray bytes = file.read(sizeLimit + 1);
    if (bytes.size() > sizeLimit) {
        qCDebug(lcImageFetch) << path << "is larger than" << sizeLimit << "bytes";
        return {};
    }
    return decodable(bytes);
}

} // namespace

NetworkImageFetcher::NetworkImageFetcher(QObject *parent, std::chrono::milliseconds timeLimit,
                                         qint64 sizeLimit)
    : QObject(parent),
      m_network(new QNetworkAccessManager(this)),
      m_timeLimit(timeLimit),
      m_sizeLimit(sizeLimit)
{
}

NetworkImageFetcher::~NetworkImageFetcher() = default;

bool NetworkImageFetcher::isFetchable(const QUrl &url)
{
    if (!url.isValid())
        return false;
    if (url.isLocalFile())
        return !url.toLocalFile().isEmpty();
    const QString scheme = url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return false;
    const QString path = url.path();
    return std::any_of(pictureExtensions.begin(), pictureExtensions.end(),
                       [&](const QString &ext) { return path.endsWith(ext, Qt::CaseInsensitive); });
}

bool NetworkImageFetcher::fetch(const QUrl &url, Done done)
{
    if (!isFetchable(url))
        return false;
    if (url.isLocalFile())
        fetchFile(url.toLocalFile(), std::move(done));
    else
        fetchRemote(url, std::move(done));
    return true;
}

void NetworkImageFetcher::fetchFile(const QString &path, Done done)
{
    // The watcher is our child: if we go first, the answer is dropped rather
    // than delivered to a caller that may be gone too.
    auto *watcher = new QFutureWatcher<QByteArray>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(readPictureFile, path, m_sizeLimit));
}

void NetworkImageFetcher::finishWithBytes(QByteArray bytes, Done done)
{
    auto *watcher = new QFutureWatcher<QByteArray>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(decodable, std::move(bytes)));
}

void NetworkImageFetcher::fetchRemote(const QUrl &url, Done done)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    QNetworkReply *reply = m_network->get(request);

    struct Transfer
    {
        QByteArray bytes;
        bool failed = false;
    };
    auto transfer = std::make_shared<Transfer>();
    const qint64 sizeLimit = m_sizeLimit;

    auto giveUp = [reply, transfer](const char *why) {
        qCDebug(lcImageFetch) << reply->url() << why;
        transfer->failed = true;
        // Queued: aborting from inside the reply's own metaDataChanged makes
        // Qt report the error twice.
        QMetaObject::invokeMethod(reply, &QNetworkReply::abort, Qt::QueuedConnection);
    };

    // The timer belongs to the reply, so it cannot outlive it.
    QTimer::singleShot(m_timeLimit, reply, [giveUp] { giveUp("ran out of time"); });

    connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, sizeLimit, giveUp] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > sizeLimit)
            giveUp("announces too many bytes");
    });
    connect(reply, &QIODevice::readyRead, reply, [reply, transfer, sizeLimit, giveUp] {
        if (transfer->failed)
            return;
        transfer->bytes.append(reply->readAll());
        if (transfer->bytes.size() > sizeLimit)
            giveUp("sent too many bytes");
    });
    connect(reply, &QNetworkReply::finished, this,
            [this, reply, transfer, done = std::move(done)]() mutable {
                reply->deleteLater();
                if (!transfer->failed && reply->error() == QNetworkReply::NoError) {
                    transfer->bytes.append(reply->readAll());
                    if (transfer->bytes.size() <= m_sizeLimit) {
                        finishWithBytes(std::move(transfer->bytes), std::move(done));
                        return;
                    }
                } else if (!transfer->failed) {
                    qCDebug(lcImageFetch) << reply->url() << reply->errorString();
                }
                done({});
            });
}
