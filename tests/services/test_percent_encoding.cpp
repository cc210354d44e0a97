// Percent escapes of URLs, whole and broken.
#include "services/percent_encoding.h"

#include <QTest>

class test_percent_encoding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("decoded");
        QTest::newRow("nothing") << QByteArray() << QByteArray("");
        QTest::newRow("both cases") << QByteArray("%5BGmail%5d/All%20Mail") << QByteArray("[Gmail]/All Mail");
        QTest::newRow("zero byte") << QByteArray("a%00b") << QByteArray("a\0b", 3);
        QTest::newRow("once only") << QByteArray("%2541") << QByteArray("%41");
        QTest::newRow("no digits") << QByteArray("%zz %4g %g4 %-1") << QByteArray("%zz %4g %g4 %-1");
        QTest::newRow("escape behind a percent sign") << QByteArray("%%41%4%42") << QByteArray("%A%4B");
        QTest::newRow("cut off") << QByteArray("a%4") << QByteArray("a%4");
        QTest::newRow("at the end") << QByteArray("100%") << QByteArray("100%");
    }

    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QTEST(percent_decoded(bytes), "decoded");
    }
};

QTEST_GUILESS_MAIN(test_percent_encoding)
#include "test_percent_encoding.moc"
