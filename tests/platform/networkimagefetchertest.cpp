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

// Every fetch answers once, later, on the main thread: with a picture within the limits, else null.
TEST(NetworkImageFetcher, AnswersWithThePictureOrNullWithinTheLimits)
{
    constexpr qint64 sizeLimit = 64 * 1024;
    NetworkImageFetcher fetcher(nullptr, std::chrono::milliseconds(300), sizeLimit);
    for (const char *address : {"https://example.com/page.html", "https://example.com/a.png.exe",
                                "https://example.com/view.php?img=a.png", "ftp://example.com/a.png"})
        EXPECT_FALSE(fetcher.fetch(QUrl(address), [](const QByteArray &) { ADD_FAILURE() << "answered"; })) << address;

    const QByteArray png = pngPicture();
    const QByteArray tooLarge = png + QByteArray(sizeLimit, '\0');
    const QHash<QByteArray, QByteArray> routes{{"/photo.JPEG?size=large", "HTTP/1.1 200 OK\r\n\r\n" + png},
                                               {"/stream.png", "HTTP/1.1 200 OK\r\n\r\n" + tooLarge}};
    QTcpServer server; // on loopback: each path answers with its canned response, or never
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead, socket, [&, socket] {
            const QByteArray response = routes.value(socket->peek(socket->bytesAvailable()).split(' ').value(1));
            if (!response.isEmpty()) {
                socket->write(response);
                socket->disconnectFromHost();
            }
        });
    });
    const QString web = QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort());

    QTemporaryDir dir;
    const auto file = [&](const QString &name, const QByteArray &bytes) {
        QFile out(dir.filePath(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size());
        return QUrl::fromLocalFile(out.fileName());
    };
    ASSERT_EQ(::mkfifo(dir.filePath("fifo.png").toLocal8Bit().constData(), 0600), 0);
    // A file needs no picture's name; a FIFO must not hold up a reading thread.
    const std::pair<QUrl, bool> rows[] = {
        {file("picture.dat", png), true}, {file("large.png", tooLarge), false}, {file("text.png", "not a picture"), false},
        {QUrl::fromLocalFile(dir.filePath("fifo.png")), false}, {QUrl(web + "/photo.JPEG?size=large"), true},
        {QUrl(web + "/stream.png"), false}, {QUrl(web + "/silent.png"), false},
    };
    for (const auto &[url, gives] : rows) {
        SCOPED_TRACE(url.toString().toStdString());
        QList<QByteArray> answers;
        ASSERT_TRUE(fetcher.fetch(url, [&](const QByteArray &encoded) {
            answers.append(QThread::currentThread() == qApp->thread() ? encoded : "answered off the main thread");
        }));
        EXPECT_TRUE(answers.isEmpty()) << "the answer must not come from inside fetch()";
        ASSERT_TRUE(QTest::qWaitFor([&] { return !answers.isEmpty(); }, 5000));
        QCoreApplication::processEvents();
        EXPECT_EQ(answers, QList<QByteArray>{gives ? png : QByteArray()});
    }
}
