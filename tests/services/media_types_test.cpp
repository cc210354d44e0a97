// The sets of file extensions that tell images, audio and video.
#include "services/plugin_helper_functions.h"

#include <QTest>

class media_types_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void telling_extensions();
    void name_data();
    void name();
    void cancelled();

private:
    plugin_helper_functions helper{nullptr};
};

void media_types_test::telling_extensions()
{
    const auto unknown = [](const char *rows, const auto &check) {
        QStringList names = QString::fromLatin1(rows).split(QLatin1Char(' '));
        names.erase(std::remove_if(names.begin(), names.end(), check), names.end());
        return names;
    };
    QCOMPARE(unknown("a.001 a.2bp a.36 a.411 a.73i a.8pbs a.8xi a.abm a.accountpicture-ms a.acorn",
                     [this](const QString &name) { return helper.check_is_image_by_extn(name); }),
             QStringList());
    QCOMPARE(unknown("a.2sf a.2sflib a.3ga a.4mp a.669 a.6cm a.8cm a.8med a.8svx a.a2m",
                     [this](const QString &name) { return helper.check_is_audio_by_extn(name); }),
             QStringList());
    QCOMPARE(unknown("a.264 a.3g2 a.3gp a.3gp2 a.3gpp a.3gpp2 a.3mm a.3p2 a.60d a.787 a.aaf",
                     [this](const QString &name) { return helper.check_is_video_by_extn(name); }),
             QStringList());
}

void media_types_test::name_data()
{
    QTest::addColumn<QString>("file_name");
    QTest::addColumn<QString>("sets"); // of image, audio, video
    const auto row = [](const char *name, const char *file_name, const char *sets) {
        QTest::newRow(name) << QString::fromUtf8(file_name) << QString::fromLatin1(sets);
    };
    row("capital letters", "PHOTO.ACORN", "image");
    row("blanks around", " photo.acorn ", "image");
    row("last extension counts", "photo.acorn.txt", "");
    row("the extension alone", ".acorn", "image");
    row("video falls back to audio", "sound.8svx", "audio video");
    row("video is not audio", "film.3gpp2", "video");
    row("beginning of an extension", "photo.acor", "");
    row("more than an extension", "photo.acorns", "");
    row("no point", "acorn", "");
    row("point at the end", "photo.acorn.", "");
    row("points at the end", "photo.acorn..", "");
    row("point and blank at the end", "photo.acorn. ", "");
    row("hyphen first", "photo.-acorn", "");
    row("letter beyond z first", "photo.äcorn", "");
    row("digit of another script first", "film.\u0663gp", "");
    row("none", "", "");
    row("blanks", "  ", "");
}

void media_types_test::name()
{
    QFETCH(QString, file_name);
    QStringList sets;
    if (helper.check_is_image_by_extn(file_name)) {
        sets.append(QStringLiteral("image"));
    }
    if (helper.check_is_audio_by_extn(file_name)) {
        sets.append(QStringLiteral("audio"));
    }
    if (helper.check_is_video_by_extn(file_name)) {
        sets.append(QStringLiteral("video"));
    }
    QTEST(sets.join(QLatin1Char(' ')), "sets");
}

void media_types_test::cancelled()
{
    helper.set_cancel_extraction(true);
    QVERIFY(!helper.check_is_image_by_extn(QStringLiteral("photo.acorn")));
    QVERIFY(!helper.check_is_video_by_extn(QStringLiteral("sound.8svx")));
    helper.set_essentials();
    QVERIFY(helper.check_is_image_by_extn(QStringLiteral("photo.acorn")));
}

QTEST_GUILESS_MAIN(media_types_test)
#include "media_types_test.moc"
