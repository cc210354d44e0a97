// What a run shows on a terminal: one line that is redrawn, as wide as the terminal, and no character of the evidence
// that would steer it.

#include "tests/host/samples.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

#include <fcntl.h>
#include <sys/ioctl.h>

namespace {

constexpr unsigned short columns = 72;

// A terminal of our own; what is written to it is collected until it is closed.
class collecting_terminal
{
public:
    collecting_terminal()
    {
        const int descriptor = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (descriptor < 0 || ::grantpt(descriptor) != 0 || ::unlockpt(descriptor) != 0) {
            return;
        }
        path = QString::fromLocal8Bit(::ptsname(descriptor));
        const winsize size{25, columns, 0, 0};
        ::ioctl(descriptor, TIOCSWINSZ, &size);
        near_end.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle);
        far_end.open(::open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC), QIODevice::ReadWrite,
                     QFileDevice::AutoCloseHandle);
        reader = std::thread([this] { collect(); });
    }
    ~collecting_terminal() { text(); }

    const QString &file_path() const { return path; }
    /// Out: what was written; nothing more is taken.
    QString text()
    {
        far_end.close();
        if (reader.joinable()) {
            reader.join();
        }
        return QString::fromUtf8(collected);
    }

private:
    // The read fails when nobody holds the far end any more.
    void collect()
    {
        char block[4096];
        for (qint64 count = 0; (count = near_end.read(block, sizeof(block))) > 0;) {
            collected.append(block, static_cast<int>(count));
        }
    }

    QFile near_end;
    QFile far_end;
    QString path;
    QByteArray collected;
    std::thread reader;
};

} // namespace

class terminal_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void one_line_is_redrawn();
};

void terminal_test::one_line_is_redrawn()
{
    const QTemporaryDir folder;
    make_samples(folder.path());
    const QString name = QStringLiteral("evidence-with-a-long-name-\x1b[2J");
    QVERIFY(QDir(folder.path()).rename(QStringLiteral("ios"), name));

    collecting_terminal terminal;
    QVERIFY(!terminal.file_path().isEmpty());
    QProcess process;
    process.setStandardOutputFile(terminal.file_path());
    start_program(process, folder.path(), QStringLiteral("run %1 --result out").arg(name));
    QCOMPARE(finish_program(process).exit_code, 0);
    const QString shown = terminal.text();

    QVERIFY(!shown.contains(QLatin1Char('\x1b')));
    const QStringList lines = shown.split(QStringLiteral("\r\n"));
    const QStringList progress = lines.filter(QStringLiteral("\r"));
    QCOMPARE(progress.size(), 1);
    const QStringList drawn = progress.first().split(QLatin1Char('\r'), Qt::SkipEmptyParts);
    QVERIFY(drawn.size() >= 3); // each tab and the end
    for (const QString &line : drawn) {
        QVERIFY2(line.size() < columns, qPrintable(line));
    }
    QVERIFY2(drawn.first().startsWith(QLatin1String("Reading ...")) &&
                 drawn.first().contains(QLatin1String("\\x1b[2J: accounts (tab 1 of 2), 0 rows")),
             qPrintable(drawn.first()));
    QVERIFY2(drawn.last().startsWith(QLatin1String("Read ...")) &&
                 drawn.last().trimmed().endsWith(QLatin1String("\\x1b[2J in 0:00")),
             qPrintable(drawn.last()));
}

QTEST_GUILESS_MAIN(terminal_test)
#include "terminal_test.moc"
