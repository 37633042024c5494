#include "test_main.h"

#include "plugin_helper_functions.h"

#include <QCryptographicHash>
#include <QMap>
#include <QTest>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

QStringList all_entries(const media_extension_table &table)
{
    QStringList entries;
    for (const QStringList &list : table.digit_lists)
        entries += list;
    for (const QStringList &list : table.letter_lists)
        entries += list;
    return entries;
}

QStringList words(const QString &text)
{
    return text.split(u' ', Qt::SkipEmptyParts);
}

// The entries that stand more than once, each as often as it stands beyond the first time.
QStringList repeated(const QStringList &entries)
{
    QStringList seen;
    QStringList repetitions;
    for (const QString &entry : entries)
        (seen.contains(entry) ? repetitions : seen).append(entry);
    repetitions.sort();
    return repetitions;
}

QStringList distinct(QStringList entries)
{
    entries.removeDuplicates();
    return entries;
}

// SHA-256 of the texts with a blank between each two.
QByteArray digest(const QStringList &entries)
{
    return QCryptographicHash::hash(entries.join(u' ').toUtf8(), QCryptographicHash::Sha256)
        .toHex();
}

} // namespace

class tst_helper_functions : public QObject
{
    Q_OBJECT

private slots:
    void init() { helper.emplace(); }
    void cleanup() { helper.reset(); }
    void tables_hold_their_entries_data();
    void tables_hold_their_entries();
    void lists_are_by_first_character_data();
    void lists_are_by_first_character();
    void letter_lists_keep_their_order_data();
    void letter_lists_keep_their_order();
    void media_are_told_by_extension_data();
    void media_are_told_by_extension();
    void every_extension_is_found_in_its_table();
    void checks_are_false_when_cancelled();
    void essentials_clear_the_cancel_flag();
    void instance_belongs_to_its_parent();
    void meta_object_is_its_own();

private:
    std::optional<plugin_helper_functions> helper;
};

void tst_helper_functions::tables_hold_their_entries_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<int>("appended");
    QTest::addColumn<int>("distinct_count");
    QTest::addColumn<QStringList>("repetitions");
    QTest::addColumn<QByteArray>("distinct_digest");
    const plugin_helper_functions tables;
    QTest::newRow("image")
        << all_entries(tables.image_extensions()) << 570 << 548
        << words(u".awd .art .cdx .drw .dpx .ink .ink .mbm .pe4 .pi2 .pic .pic "
                 ".pix .pov .ptx .pat .plt .pmg .rgb .thm .tif .vst"_s)
        << QByteArray("62acba49faf920650ff41469e791896736746baf1c88d1592a5da2940a60286f");
    QTest::newRow("video")
        << all_entries(tables.video_extensions()) << 136 << 133 << words(u".avs .dcr .fbr"_s)
        << QByteArray("a1a289d68ee296343ffff335c6fa5154f8d8adfba25ff74a3f3714caa40dc4ec");
    QTest::newRow("audio")
        << all_entries(tables.audio_extensions()) << 571 << 545
        << words(u".ams .au .dig .gio .gsm .ins .jam .koz .mus .mus .mux .ovw "
                 ".prg .rbs .sd .smp .snd .snd .sng .sseq .sty .syn .tak .vmf "
                 ".wav .xa"_s)
        << QByteArray("44c191523f532955f5c542f8e376e976fa699b763eb4a1e096055b6057ee9d7c");
}

void tst_helper_functions::tables_hold_their_entries()
{
    QFETCH(const QStringList, entries);
    QFETCH(QStringList, repetitions);
    repetitions.sort();
    QTEST(static_cast<int>(entries.size()), "appended");
    QTEST(static_cast<int>(distinct(entries).size()), "distinct_count");
    QCOMPARE(repeated(entries), repetitions);
    QTEST(digest(distinct(entries)), "distinct_digest");
}

void tst_helper_functions::lists_are_by_first_character_data()
{
    QTest::addColumn<int>("table");
    QTest::newRow("image") << 0;
    QTest::newRow("video") << 1;
    QTest::newRow("audio") << 2;
}

void tst_helper_functions::lists_are_by_first_character()
{
    QFETCH(const int, table);
    const media_extension_table &extensions = table == 0   ? helper->image_extensions()
                                              : table == 1 ? helper->video_extensions()
                                                           : helper->audio_extensions();
    const auto all_start_with = [](const QStringList &list, char16_t first) {
        return std::all_of(list.begin(), list.end(), [first](const QString &entry) {
            return entry.startsWith(u'.') && entry.at(1) == first && entry == entry.toLower();
        });
    };
    for (char16_t index = 0; index < 10; ++index)
        QVERIFY(all_start_with(extensions.digit_lists[index], u'0' + index));
    for (char16_t index = 0; index < 26; ++index)
        QVERIFY(all_start_with(extensions.letter_lists[index], u'a' + index));
}

void tst_helper_functions::letter_lists_keep_their_order_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("order");
    const plugin_helper_functions tables;
    const auto image = [&tables](char letter) {
        return tables.image_extensions().letter_lists[static_cast<size_t>(letter - 'a')];
    };
    const auto audio = [&tables](char letter) {
        return tables.audio_extensions().letter_lists[static_cast<size_t>(letter - 'a')];
    };
    QTest::newRow("images with a digit")
        << tables.image_extensions().digit_lists[8] << u".8pbs .8xi"_s;
    QTest::newRow("images with a: both runs of the alphabet")
        << image('a')
        << u".abm .accountpicture-ms .acorn .acr .adc .afx .agif .agp .aic .ais .albm .apd .apm "
           ".apng .aps .apx .arr .art .artwork .arw .asw .avatar .awd .abc .ac5 .ac6 .af2 .af3 "
           ".ai .artb .asy .awg"_s;
    QTest::newRow("images with i")
        << image('i')
        << u".i3d .ic1 .ic2 .ic3 .ica .icb .icn .icon .icpr .ilbm .img .imj .info .ink .int "
           ".ipick .ipx .itc2 .ithmb .ivr .ivue .iwi .idea .igt .igx .imd"_s;
    QTest::newRow("images with z") << image('z') << u".zif .zgm"_s;
    QTest::newRow("videos with m")
        << tables.video_extensions().letter_lists[12] << u".mov .mkv .mp4"_s;
    QTest::newRow("videos with z") << tables.video_extensions().letter_lists[25] << QString();
    QTest::newRow("sounds with w")
        << audio('w')
        << u".w01 .w64 .wav .wave .wax .wem .wfb .wfd .wfm .wfp .wma .wow .wpk .wpp .wproj .wrk "
           ".wtpl .wtpt .wus .wut .wv .wvc .wve .wwu .wyz"_s;
    QTest::newRow("sounds with 8")
        << tables.audio_extensions().digit_lists[8] << u".8cm .8med .8svx"_s;
}

void tst_helper_functions::letter_lists_keep_their_order()
{
    QFETCH(const QStringList, list);
    QFETCH(const QString, order);
    QCOMPARE(distinct(list), words(order));
}

void tst_helper_functions::media_are_told_by_extension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kinds");
    QTest::newRow("a photo with a blank behind it") << u"photo.JPG "_s << u"image"_s;
    QTest::newRow("a path") << u"/Users/ann/clip.Mp4"_s << u"video"_s;
    QTest::newRow("a song") << u"song.mp3"_s << u"audio"_s;
    QTest::newRow("the last extension counts") << u"song.mp3.jpg"_s << u"image"_s;
    QTest::newRow("an extension of several kinds") << u"a.abm"_s << u"image audio"_s;
    QTest::newRow("an extension with a digit first") << u"a.3gp"_s << u"video"_s;
    QTest::newRow("an extension that stands twice") << u"a.tif"_s << u"image"_s;
    QTest::newRow("a name that is all extension") << u".jpg"_s << u"image"_s;
    QTest::newRow("an empty name") << QString() << QString();
    QTest::newRow("blanks") << u"  "_s << QString();
    QTest::newRow("a dot at the end") << u"archive."_s << QString();
    QTest::newRow("two dots at the end") << u"a.."_s << QString();
    QTest::newRow("a dot and a blank at the end") << u"archive. "_s << QString();
    QTest::newRow("no dot") << u"README"_s << QString();
    QTest::newRow("no dot in a known extension's name") << u"jpg"_s << QString();
    QTest::newRow("an unknown extension") << u"a.jpgx"_s << QString();
    QTest::newRow("a sign first") << u"a.-jpg"_s << QString();
    QTest::newRow("a letter beyond z") << u"a.\u00e9jpg"_s << QString();
    QTest::newRow("a digit beyond 9") << u"a.\u0663gp"_s << QString();
    QTest::newRow("a wide letter") << u"a.\uff4apg"_s << QString();
}

void tst_helper_functions::media_are_told_by_extension()
{
    QFETCH(const QString, name);
    QFETCH(const QString, kinds);
    QCOMPARE(helper->check_is_image_by_extn(name), kinds.contains(u"image"_s));
    QCOMPARE(helper->check_is_video_by_extn(name), kinds.contains(u"video"_s));
    QCOMPARE(helper->check_is_audio_by_extn(name), kinds.contains(u"audio"_s));
}

void tst_helper_functions::every_extension_is_found_in_its_table()
{
    for (const QString &extension : all_entries(helper->image_extensions()))
        QVERIFY2(helper->check_is_image_by_extn(u"name"_s + extension), qPrintable(extension));
    for (const QString &extension : all_entries(helper->video_extensions()))
        QVERIFY2(helper->check_is_video_by_extn(u"name"_s + extension), qPrintable(extension));
    for (const QString &extension : all_entries(helper->audio_extensions()))
        QVERIFY2(helper->check_is_audio_by_extn(u"name"_s + extension), qPrintable(extension));
}

void tst_helper_functions::checks_are_false_when_cancelled()
{
    helper->set_cancel_extraction(true);
    QVERIFY(!helper->check_is_image_by_extn(u"a.jpg"_s));
    QVERIFY(!helper->check_is_video_by_extn(u"a.mp4"_s));
    QVERIFY(!helper->check_is_audio_by_extn(u"a.mp3"_s));
}

void tst_helper_functions::essentials_clear_the_cancel_flag()
{
    helper->set_cancel_extraction(true);
    helper->set_essentials();
    QVERIFY(helper->check_is_image_by_extn(u"a.jpg"_s));
    helper->set_cancel_extraction(true);
    helper->set_cancel_extraction(false);
    QVERIFY(helper->check_is_audio_by_extn(u"a.mp3"_s));
}

void tst_helper_functions::instance_belongs_to_its_parent()
{
    QWidget parent;
    const plugin_helper_functions instance(&parent);
    QCOMPARE(instance.parentWidget(), &parent);
}

// Without one the helper would pass for a plain widget.
void tst_helper_functions::meta_object_is_its_own()
{
    QCOMPARE(helper->metaObject()->className(), "plugin_helper_functions");
    QVERIFY(helper->inherits("plugin_helper_functions"));
    QCOMPARE(helper->metaObject()->superClass(), &QWidget::staticMetaObject);
    const int inherited = QWidget::staticMetaObject.methodCount();
    QCOMPARE(helper->metaObject()->methodCount(), inherited);
}

TEST_MAIN(tst_helper_functions)
#include "tst_helper_functions.moc"
