// The sets of file extensions that tell images, audio and video.
#include "services/plugin_helper_functions.h"
#include "tests/services/service_test.h"

class test_media_types : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sets_data()
    {
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("expected"); // of image, audio, video
        text_row("images", ".001 .2bp .36 .411 .73i .8pbs .8xi .abm .accountpicture-ms .acorn", "image");
        text_row("audio, which video falls back to", ".2sf .2sflib .3ga .4mp .669 .6cm .8cm .8med .8svx .a2m",
                 "audio video");
        text_row("video", ".264 .3g2 .3gp .3gp2 .3gpp .3gpp2 .3mm .3p2 .60d .787 .aaf", "video");
        text_row("capital letters, and a blank behind", "PHOTO.ACORN photo.Acorn\t", "image");
        text_row("another extension", "acorn photo.acorn.txt photo.acor photo.acorns", "");
        text_row("points at the end", "photo.acorn. photo.acorn.. photo.acorn.\t . ..", "");
        text_row("other first characters", "photo.-acorn photo.äcorn film.\u0663gp", "");
        text_row("none", "", "");
    }

    void sets()
    {
        QFETCH(QString, names);
        for (const QString &name : names.split(QLatin1Char(' '))) {
            QStringList found;
            found += helper.check_is_image_by_extn(name) ? QStringList("image"_s) : QStringList();
            found += helper.check_is_audio_by_extn(name) ? QStringList("audio"_s) : QStringList();
            found += helper.check_is_video_by_extn(name) ? QStringList("video"_s) : QStringList();
            QTEST(found.join(QLatin1Char(' ')), "expected");
        }
    }

    void cancelled()
    {
        helper.set_cancel_extraction(true);
        QVERIFY(!helper.check_is_image_by_extn("photo.acorn"_s));
        QVERIFY(!helper.check_is_video_by_extn("sound.8svx"_s));
        helper.set_essentials();
        QVERIFY(helper.check_is_image_by_extn("photo.acorn"_s));
    }

private:
    plugin_helper_functions helper{nullptr};
};

QTEST_GUILESS_MAIN(test_media_types)
#include "test_media_types.moc"
