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
    NetworkImageFetcher fetcher(nullptr, shortTimeLimit, smallSizeLimit);
    for (const char *address : {"http://example.com/", "https://example.com/page.html", "https://example.com/a.png.exe",
                                "https://example.com/view.php?img=a.png", "ftp://example.com/a.png",
                                "data:image/png;base64,iVBORw0KGgo=", "a.png", ""}) {
        EXPECT_FALSE(NetworkImageFetcher::isFetchable(QUrl(address))) << address;
        EXPECT_FALSE(fetcher.fetch(QUrl(address), [](const QByteArray &) { ADD_FAILURE() << "answered"; })) << address;
    }
    for (const char *address : {"file:///tmp/no-extension-needed.txt", "https://example.com/dir/photo.JPEG",
                                "https://example.com/a.webp?size=large"})
        EXPECT_TRUE(NetworkImageFetcher::isFetchable(QUrl(address))) << address;
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
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size());
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
        QList<QByteArray> answers;
        ASSERT_TRUE(fetcher.fetch(url, [&](const QByteArray &encoded) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            answers.append(encoded);
        }));
        EXPECT_TRUE(answers.isEmpty()) << "the answer must not come from inside fetch()";
        ASSERT_TRUE(QTest::qWaitFor([&] { return !answers.isEmpty(); }, waitMs));
        QCoreApplication::processEvents();
        ASSERT_EQ(answers.size(), 1);
        EXPECT_EQ(answers.first(), gives ? png : QByteArray());
        EXPECT_EQ(answers.first().isNull(), !gives);
    }
}

} // namespace
