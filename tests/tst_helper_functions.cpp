#include "file_size_limit.h"
#include "files.h"
#include "log_capture.h"
#include "run_context_backup.h"
#include "test_main.h"

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <algorithm>
#include <optional>

#include <sys/stat.h>

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

// An SQLite connection that closes with its scope.
class connection
{
public:
    explicit connection(const QString &path) : name(path)
    {
        database = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        database.setDatabaseName(path);
        database.open();
    }
    ~connection()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(connection)

    QStringList run(const QString &command) const
    {
        QSqlQuery query(command, database);
        QStringList values;
        while (query.next())
            values.append(query.value(0).toString());
        return values;
    }

private:
    QString name;
    QSqlDatabase database;
};

} // namespace

class tst_helper_functions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
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
    void live_database_is_read_back_from_its_copy();
    void copy_of_a_read_only_database_is_writable();
    void only_companions_that_exist_are_copied();
    void stale_companions_are_not_replayed();
    void regular_file_is_copied_without_companions();
    void copies_of_like_names_stand_side_by_side();
    void copy_is_refused_data();
    void copy_is_refused();
    void copy_is_refused_when_cancelled();
    void failed_copy_is_silent_and_leaves_nothing();
    void failed_companion_leaves_no_copy_without_it();
    void file_that_does_not_fit_leaves_nothing();
    void pipe_is_refused_without_waiting_for_it();
    void instance_belongs_to_its_parent();

private:
    QString source(const QString &name) const { return folder->filePath(name); }
    QStringList copies() const
    {
        return QDir(folder->filePath(u"adhoc"_s)).entryList(QDir::Files | QDir::Hidden);
    }

    std::optional<test_support::run_context_backup> context;
    std::optional<QTemporaryDir> folder;
    std::optional<plugin_helper_functions> helper;
};

void tst_helper_functions::init()
{
    context.emplace();
    folder.emplace();
    helper.emplace();
    helper->set_adhoc_parent_path(folder->filePath(u"adhoc"_s) + u'/');
}

void tst_helper_functions::cleanup()
{
    helper.reset();
    folder.reset();
    context.reset();
}

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

void tst_helper_functions::live_database_is_read_back_from_its_copy()
{
    const connection live(source(u"live.sqlite"_s));
    live.run(u"PRAGMA journal_mode=WAL"_s);
    live.run(u"CREATE TABLE fruit (name TEXT)"_s);
    live.run(u"INSERT INTO fruit VALUES ('apple'), ('pear')"_s);
    QVERIFY(QFileInfo(source(u"live.sqlite-wal"_s)).size() > 0);
    QVERIFY(QFileInfo::exists(source(u"live.sqlite-shm"_s)));

    const QString copy = helper->get_adhoc_path_for_database(source(u"live.sqlite"_s));
    QCOMPARE(copy, source(u"adhoc/live.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"live.sqlite"_s, u"live.sqlite-shm"_s, u"live.sqlite-wal"_s}));
    QCOMPARE(test_support::read_file(copy + u"-wal"_s),
             test_support::read_file(source(u"live.sqlite-wal"_s)));
    const connection copied(copy);
    QCOMPARE(copied.run(u"SELECT name FROM fruit"_s), (QStringList{u"apple"_s, u"pear"_s}));
    QCOMPARE(copied.run(u"PRAGMA integrity_check"_s), QStringList{u"ok"_s});
}

void tst_helper_functions::copy_of_a_read_only_database_is_writable()
{
    const QString path = source(u"evidence.sqlite"_s);
    test_support::write_file(path, "bytes");
    QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));
    const QString copy = helper->get_adhoc_path_for_database(path);
    QVERIFY(QFile::permissions(copy).testFlag(QFileDevice::WriteOwner));
    QVERIFY(!QFile::permissions(path).testFlag(QFileDevice::WriteOwner));
}

void tst_helper_functions::only_companions_that_exist_are_copied()
{
    test_support::write_file(source(u"a.sqlite"_s), "main");
    test_support::write_file(source(u"a.sqlite-shm"_s), "shared");
    helper->get_adhoc_path_for_database(source(u"a.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"a.sqlite"_s, u"a.sqlite-shm"_s}));
}

void tst_helper_functions::stale_companions_are_not_replayed()
{
    test_support::write_file(source(u"a.sqlite"_s), "main");
    test_support::make_folder(source(u"adhoc"_s));
    test_support::write_file(source(u"adhoc/a.sqlite-wal"_s), "stale");
    helper->get_adhoc_path_for_database(source(u"a.sqlite"_s));
    QCOMPARE(copies(), QStringList{u"a.sqlite"_s});
}

void tst_helper_functions::regular_file_is_copied_without_companions()
{
    test_support::write_file(source(u"a.sqlite"_s), "main");
    test_support::write_file(source(u"a.sqlite-wal"_s), "log");
    const QString copy = helper->get_adhoc_path_for_regular_file(source(u"a.sqlite"_s));
    QCOMPARE(copy, source(u"adhoc/a.sqlite"_s));
    QCOMPARE(copies(), QStringList{u"a.sqlite"_s});
    QCOMPARE(test_support::read_file(copy), QByteArray("main"));
}

void tst_helper_functions::copies_of_like_names_stand_side_by_side()
{
    const QString path = source(u"a.bin"_s);
    test_support::write_file(path, "first");
    QCOMPARE(helper->get_adhoc_path_for_regular_file(path), source(u"adhoc/a.bin"_s));
    test_support::write_file(path, "second");
    QCOMPARE(helper->get_adhoc_path_for_regular_file(path), source(u"adhoc/1_a.bin"_s));
    QCOMPARE(test_support::read_file(source(u"adhoc/a.bin"_s)), QByteArray("first"));
    QCOMPARE(test_support::read_file(source(u"adhoc/1_a.bin"_s)), QByteArray("second"));
}

void tst_helper_functions::copy_is_refused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("parent");
    QTest::newRow("an empty path") << QString() << u"/adhoc/"_s;
    QTest::newRow("a blank path") << u"  "_s << u"/adhoc/"_s;
    QTest::newRow("a path without a file name") << u"/Users/"_s << u"/adhoc/"_s;
    QTest::newRow("no folder to copy into") << u"/a.bin"_s << QString();
}

void tst_helper_functions::copy_is_refused()
{
    QFETCH(const QString, path);
    QFETCH(const QString, parent);
    test_support::write_file(source(u"a.bin"_s), "content");
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder->path()));
    helper->set_adhoc_parent_path(parent.isEmpty() ? parent : folder->path() + parent);
    const QString given = path.trimmed().isEmpty() ? path : folder->path() + path;
    const QString database_copy = helper->get_adhoc_path_for_database(given);
    const QString file_copy = helper->get_adhoc_path_for_regular_file(given);
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(database_copy, QString());
    QCOMPARE(file_copy, QString());
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{u"a.bin"_s});
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::copy_is_refused_when_cancelled()
{
    test_support::write_file(source(u"a.bin"_s), "content");
    helper->set_cancel_extraction(true);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"a.bin"_s)), QString());
    helper->set_cancel_extraction(false);
    plugin_static_function::set_cancel_extraction(true);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"a.bin"_s)), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::failed_copy_is_silent_and_leaves_nothing()
{
    const test_support::log_capture log;
    QCOMPARE(helper->get_adhoc_path_for_database(source(u"absent.sqlite"_s)), QString());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::failed_companion_leaves_no_copy_without_it()
{
    test_support::write_file(source(u"a.sqlite"_s), "main");
    test_support::make_folder(source(u"a.sqlite-wal"_s));
    QCOMPARE(helper->get_adhoc_path_for_database(source(u"a.sqlite"_s)), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::file_that_does_not_fit_leaves_nothing()
{
    test_support::write_file(source(u"big.bin"_s), QByteArray(100000, 'x'));
    const test_support::file_size_limit limit(50000);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"big.bin"_s)), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::pipe_is_refused_without_waiting_for_it()
{
    const QString pipe = source(u"pipe"_s);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(pipe), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_helper_functions::instance_belongs_to_its_parent()
{
    QWidget parent;
    const plugin_helper_functions instance(&parent);
    QCOMPARE(instance.parentWidget(), &parent);
}

TEST_MAIN(tst_helper_functions)
#include "tst_helper_functions.moc"
