#include "platform/x11/networkimagefetcher.h"

#include "platform/testpicture.h"

#include <QCoreApplication>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr int waitMs = 5000;
constexpr qint64 smallSizeLimit = 64 * 1024;
constexpr std::chrono::milliseconds shortTimeLimit{300};

// A loopback web server: each path answers with a canned response, or never.
struct TinyHttpServer
{
    explicit TinyHttpServer(const QHash<QByteArray, QByteArray> &routes)
    {
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
        QObject::connect(&server, &QTcpServer::newConnection, &server, [this, routes] {
            while (QTcpSocket *socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QIODevice::readyRead, socket, [socket, routes] {
                    const QByteArray request = socket->property("request").toByteArray() + socket->readAll();
                    socket->setProperty("request", request);
                    const QByteArray response = routes.value(request.split(' ').value(1));
                    if (request.contains("\r\n\r\n") && !response.isEmpty()) {
                        socket->write(response);
                        socket->disconnectFromHost();
                    }
                });
            }
        });
    }
    QUrl url(const char *path) const { return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(server.serverPort()).arg(path)); }
    QTcpServer server;
};

QByteArray httpOk(const QByteArray &body, bool withLength = true)
{
    const QByteArray length = withLength ? "Content-Length: " + QByteArray::number(body.size()) + "\r\n" : "";
    return "HTTP/1.1 200 OK\r\nConnection: close\r\n" + length + "\r\n" + body;
}

// Only files and addresses naming a picture are fetched. Every fetch answers
// once, later, on the main thread: with the bytes of a picture within the
// limits, else with null.
TEST(NetworkImageFetcher, AnswersWithThePictureOrNullWithinTheLimits)
{
    const std::pair<const char *, bool> addresses[] = {
        {"file:///tmp/no-extension-needed.txt", true}, {"https://example.com/dir/photo.JPEG", true},
        {"https://example.com/a.webp?size=large", true}, {"http://example.com/", false},
        {"https://example.com/page.html", false}, {"https://example.com/a.png.exe", false},
        {"https://example.com/view.php?img=a.png", false}, {"ftp://example.com/a.png", false},
        {"data:image/png;base64,iVBORw0KGgo=", false}, {"a.png", false}, {"", false},
    };
    NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
    for (const auto &[address, fetchable] : addresses) {
        const QUrl url(QString::fromLatin1(address));
        EXPECT_EQ(NetworkImageFetcher::isFetchable(url), fetchable) << address;
        EXPECT_TRUE(fetchable || !fetcher.fetch(url, [](const QByteArray &) { ADD_FAILURE() << "answered"; })) << address;
    }
    const QByteArray png = pngPicture();
    const QByteArray tooLarge = png + QByteArray(smallSizeLimit, '\0');
    TinyHttpServer server({
        {"/pic.png", httpOk(png)},
        {"/page.png", httpOk("<html>not a picture</html>")},
        {"/announced.png", "HTTP/1.1 200 OK\r\nContent-Length: 20000000\r\n\r\n" + png},
        {"/stream.png", httpOk(tooLarge, false)},
    });
    QTemporaryDir dir;
    const auto file = [&](const QString &name, const QByteArray &bytes) {
        QFile out(dir.filePath(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(bytes);
        return QUrl::fromLocalFile(out.fileName());
    };
    const QString fifo = dir.filePath("fifo.png");
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    const std::pair<QUrl, bool> rows[] = {
        {file("picture.png", png), true},           {file("large.png", tooLarge), false},
        {file("text.png", "not a picture"), false}, {file("empty.png", {}), false},
        {QUrl::fromLocalFile(dir.path()), false},   {QUrl::fromLocalFile(fifo), false},
        {server.url("/pic.png"), true},             {server.url("/page.png"), false},
        {server.url("/announced.png"), false},      {server.url("/stream.png"), false},
        {server.url("/silent.png"), false},
    };
    for (const auto &[url, gives] : rows) {
        SCOPED_TRACE(url.toString().toStdString());
        int calls = 0;
        QByteArray bytes;
        ASSERT_TRUE(fetcher.fetch(url, [&](const QByteArray &encoded) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            ++calls;
            bytes = encoded;
        }));
        EXPECT_EQ(calls, 0) << "the answer must not come from inside fetch()";
        ASSERT_TRUE(QTest::qWaitFor([&] { return calls > 0; }, waitMs));
        QCoreApplication::processEvents();
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(bytes, gives ? png : QByteArray());
        EXPECT_EQ(bytes.isNull(), !gives);
    }
}

} // namespace
