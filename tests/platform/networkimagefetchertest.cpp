#include "platform/x11/networkimagefetcher.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace std::chrono_literals;

constexpr int waitMs = 5000;
constexpr qint64 smallSizeLimit = 64 * 1024;
constexpr auto shortTimeLimit = 300ms;

QByteArray pngBytes()
{
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Collects the answers of one fetch and checks how and where they come.
struct Answer
{
    int calls = 0;
    bool onMainThread = true;
    QByteArray bytes;

    ImageFetcher::Done callback()
    {
        return [this](const QByteArray &encoded) {
            ++calls;
            onMainThread = onMainThread && QThread::currentThread() == qApp->thread();
            bytes = encoded;
        };
    }
    bool wait() { return QTest::qWaitFor([this] { return calls > 0; }, waitMs); }
};

TEST(NetworkImageFetcher, FetchesOnlyFilesAndPictureAddresses)
{
    const struct
    {
        const char *url;
        bool fetchable;
    } rows[] = {
        {"file:///tmp/anything", true},
        {"file:///tmp/no-extension-needed.txt", true},
        {"http://example.com/a.png", true},
        {"https://example.com/dir/photo.JPEG", true},
        {"https://example.com/a.webp?size=large", true},
        {"http://example.com/favicon.ico", true},
        {"http://example.com/", false},
        {"https://example.com/login?token=abc", false},
        {"https://example.com/page.html", false},
        {"https://example.com/a.png.exe", false},
        {"https://example.com/view.php?img=a.png", false},
        {"https://example.com/a.png/", false},
        {"ftp://example.com/a.png", false},
        {"data:image/png;base64,iVBORw0KGgo=", false},
        {"mailto:someone@example.com", false},
        {"a.png", false},
        {"", false},
    };
    NetworkImageFetcher fetcher;
    for (const auto &row : rows) {
        const QUrl url(QString::fromLatin1(row.url));
        EXPECT_EQ(NetworkImageFetcher::isFetchable(url), row.fetchable) << row.url;
        if (!row.fetchable) {
            Answer answer;
            EXPECT_FALSE(fetcher.fetch(url, answer.callback())) << row.url;
            QCoreApplication::processEvents();
            EXPECT_EQ(answer.calls, 0) << row.url;
        }
    }
}

class FileFetchTest : public ::testing::Test
{
protected:
    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(m_dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    QByteArray fetch(const QString &path)
    {
        NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
        Answer answer;
        EXPECT_TRUE(fetcher.fetch(QUrl::fromLocalFile(path), answer.callback()));
        EXPECT_EQ(answer.calls, 0) << "the answer must not come from inside fetch()";
        EXPECT_TRUE(answer.wait()) << qPrintable(path);
        QCoreApplication::processEvents();
        EXPECT_EQ(answer.calls, 1);
        EXPECT_TRUE(answer.onMainThread);
        return answer.bytes;
    }

    QTemporaryDir m_dir;
};

TEST_F(FileFetchTest, PictureFileGivesItsBytes)
{
    const QByteArray png = pngBytes();
    EXPECT_EQ(fetch(write(QStringLiteral("picture.png"), png)), png);
}

TEST_F(FileFetchTest, FailuresGiveNull)
{
    QByteArray tooLarge = pngBytes();
    tooLarge.append(QByteArray(smallSizeLimit, '\0'));
    const QString fifo = m_dir.filePath(QStringLiteral("fifo.png"));
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);

    const QStringList paths{
        write(QStringLiteral("large.png"), tooLarge),
        write(QStringLiteral("text.png"), "this is not a picture"),
        write(QStringLiteral("empty.png"), QByteArray()),
        m_dir.filePath(QStringLiteral("missing.png")),
        m_dir.path(),
        fifo,
    };
    for (const QString &path : paths)
        EXPECT_TRUE(fetch(path).isNull()) << qPrintable(path);
}

// A loopback web server: each path answers with a canned response, or never.
class TinyHttpServer
{
public:
    TinyHttpServer() { EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost)); }

    void route(const QByteArray &path, const QByteArray &response) { m_routes.insert(path, response); }
    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }

    void start()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                QObject::connect(socket, &QIODevice::readyRead, socket, [this, socket] {
                    m_requests[socket].append(socket->readAll());
                    const QByteArray &request = m_requests[socket];
                    if (!request.contains("\r\n\r\n"))
                        return;
                    const QByteArray path = request.split(' ').value(1);
                    const QByteArray response = m_routes.value(path);
                    if (response.isEmpty())
                        return; // never answers
                    socket->write(response);
                    socket->disconnectFromHost();
                });
            }
        });
    }

private:
    QTcpServer m_server;
    QHash<QByteArray, QByteArray> m_routes;
    QHash<QTcpSocket *, QByteArray> m_requests;
};

QByteArray httpResponse(const QByteArray &status, const QByteArray &body,
                        const QByteArray &extraHeaders = {}, bool withLength = true)
{
    QByteArray response = "HTTP/1.1 " + status + "\r\nConnection: close\r\n";
    if (withLength)
        response += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return response + extraHeaders + "\r\n" + body;
}

TEST(NetworkImageFetcher, HttpAnswers)
{
    const QByteArray png = pngBytes();
    TinyHttpServer server;
    server.route("/pic.png", httpResponse("200 OK", png, "Content-Type: image/png\r\n"));
    server.route("/moved.png", httpResponse("302 Found", {}, "Location: /pic.png\r\n"));
    server.route("/missing.png", httpResponse("404 Not Found", "<html>gone</html>"));
    server.route("/page.png", httpResponse("200 OK", "<html>not a picture</html>"));
    server.route("/announced.png",
                 "HTTP/1.1 200 OK\r\nContent-Length: 20000000\r\n\r\n" + png);
    server.route("/stream.png",
                 httpResponse("200 OK", png + QByteArray(2 * smallSizeLimit, 'x'), {}, false));
    server.start();

    const struct
    {
        const char *path;
        bool gives;
    } rows[] = {
        {"/pic.png", true},       {"/moved.png", true},     {"/missing.png", false},
        {"/page.png", false},     {"/announced.png", false}, {"/stream.png", false},
        {"/silent.png", false},
    };
    NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
    for (const auto &row : rows) {
        Answer answer;
        ASSERT_TRUE(fetcher.fetch(server.url(QString::fromLatin1(row.path)), answer.callback()));
        ASSERT_TRUE(answer.wait()) << row.path;
        QCoreApplication::processEvents();
        EXPECT_EQ(answer.calls, 1) << row.path;
        EXPECT_TRUE(answer.onMainThread) << row.path;
        EXPECT_EQ(answer.bytes, row.gives ? png : QByteArray()) << row.path;
        EXPECT_EQ(answer.bytes.isNull(), !row.gives) << row.path;
    }
}

TEST(NetworkImageFetcher, SilentServerEndsAtTheTimeLimit)
{
    TinyHttpServer server;
    server.start();
    NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
    Answer answer;
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(fetcher.fetch(server.url(QStringLiteral("/silent.png")), answer.callback()));
    ASSERT_TRUE(answer.wait());
    EXPECT_GE(timer.elapsed(), shortTimeLimit.count() - 20);
    EXPECT_LT(timer.elapsed(), 3000);
    EXPECT_TRUE(answer.bytes.isNull());
}

// A fetcher that goes away takes its pending answers with it: the caller may
// be gone too.
TEST(NetworkImageFetcher, NoAnswerAfterTheFetcherIsGone)
{
    TinyHttpServer server;
    server.start();
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("p.png")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(pngBytes());
    file.close();

    Answer remote;
    Answer local;
    {
        NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
        ASSERT_TRUE(fetcher.fetch(server.url(QStringLiteral("/silent.png")), remote.callback()));
        ASSERT_TRUE(fetcher.fetch(QUrl::fromLocalFile(file.fileName()), local.callback()));
    }
    QTest::qWait(shortTimeLimit.count() * 2);
    EXPECT_EQ(remote.calls, 0);
    EXPECT_EQ(local.calls, 0);
}

} // namespace
