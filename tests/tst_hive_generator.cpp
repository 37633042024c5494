#include "files.h"
#include "hive_generator.h"
#include "hive_reader.h"
#include "random_damage.h"
#include "test_main.h"

#include <QHash>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_hive_generator : public QObject
{
    Q_OBJECT

private slots:
    void makes_the_same_hive_of_the_same_bytes();
    void makes_other_hives_of_other_bytes();
    void makes_an_intact_hive_of_no_bytes_data();
    void makes_an_intact_hive_of_no_bytes();
    void does_every_damage();
    void makes_hives_most_of_which_open();
    void reads_choices_in_their_bounds();
    void gives_the_first_choice_when_used_up();
    void makes_the_same_random_bytes_everywhere();

private:
    QTemporaryDir m_folder;
};

namespace {

constexpr qsizetype choice_size = 600;

/// Descriptions of artefacts whose keys the generator does not know by itself.
QVariantList later_artifacts()
{
    const auto described = [](const QString &input, const QString &key, int level) {
        const QVariantMap read{
            {u"path"_s, key}, {u"first_value_level"_s, level}, {u"last_level"_s, level}};
        return QVariantMap{{u"input"_s, input}, {u"keys"_s, QVariantList{read}}};
    };
    return {described(u"software_hive"_s, u"Later\\Machine"_s, 1),
            described(u"user_hives"_s, u"Later\\User"_s, 0),
            described(u"package_folders"_s, u"Later\\Folders"_s, 0)};
}

generated_hive hive_of_seed(quint32 seed)
{
    byte_choices choices(random_bytes(seed, choice_size));
    return generate_hive(choices, seed % 2 == 0 ? hive_kind::software : hive_kind::user, {});
}

} // namespace

void tst_hive_generator::makes_the_same_hive_of_the_same_bytes()
{
    for (quint32 seed = 0; seed < 20; ++seed) {
        QVERIFY(hive_of_seed(seed).bytes == hive_of_seed(seed).bytes);
        QCOMPARE(hive_of_seed(seed).damages, hive_of_seed(seed).damages);
    }
}

void tst_hive_generator::makes_other_hives_of_other_bytes()
{
    QSet<QByteArray> hives;
    for (quint32 seed = 0; seed < 50; ++seed)
        hives.insert(hive_of_seed(seed).bytes);
    QCOMPARE(hives.size(), 50);
}

void tst_hive_generator::makes_an_intact_hive_of_no_bytes_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");

    const int software = static_cast<int>(hive_kind::software);
    const int user = static_cast<int>(hive_kind::user);
    QTest::newRow("an application in the native view")
        << software << u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Application"_s
        << u"DisplayName"_s;
    QTest::newRow("an application in the 32-bit view")
        << software << u"WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Application"_s
        << u"DisplayName"_s;
    QTest::newRow("a registered application")
        << software << u"RegisteredApplications"_s << u"Application"_s;
    QTest::newRow("a UserAssist entry")
        << user
        << u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist\\Count\\Count"_s
        << u"P:\\havafgnyy.rkr"_s;
    QTest::newRow("an entry of the Store")
        << user
        << u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Compatibility Assistant\\Store"_s
        << u"C:\\App\\app.exe"_s;
    QTest::newRow("a desktop icon")
        << user
        << u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HideDesktopIcons\\NewStartPanel"_s
        << u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;
    QTest::newRow("a subkey of a later artefact's key")
        << software << u"Later\\Machine\\Application"_s << u"Application"_s;
    QTest::newRow("a later artefact's key") << user << u"Later\\User"_s << u"Application"_s;
    QTest::newRow("the icon's name")
        << user
        << u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Desktop\\NameSpace\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s
        << u""_s;
}

void tst_hive_generator::makes_an_intact_hive_of_no_bytes()
{
    QFETCH(const int, kind);
    QFETCH(const QString, key);
    QFETCH(const QString, value);
    byte_choices choices{QByteArray()};
    const generated_hive hive =
        generate_hive(choices, static_cast<hive_kind>(kind), later_artifacts());
    QCOMPARE(hive.damages, QStringList());

    const QString path = m_folder.filePath(u"hive"_s);
    write_file(path, hive.bytes);
    const QList<read_value> values = hive_reader(path).values(key);
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.first().name, value);
}

void tst_hive_generator::does_every_damage()
{
    QHash<QString, int> done;
    for (quint32 seed = 0; seed < 1000; ++seed) {
        const QStringList damages = hive_of_seed(seed).damages;
        for (const QString &damage : damages)
            ++done[damage];
    }
    const QStringList all = all_damages();
    QStringList missing;
    for (const QString &damage : all) {
        if (!done.contains(damage))
            missing.append(damage);
    }
    QCOMPARE(missing, QStringList());
}

// A hive that does not open tests nothing but the opening.
void tst_hive_generator::makes_hives_most_of_which_open()
{
    constexpr int hives = 1000;
    const QString path = m_folder.filePath(u"hive"_s);
    int opened = 0;
    int damaged_and_opened = 0;
    for (quint32 seed = 0; seed < hives; ++seed) {
        const generated_hive hive = hive_of_seed(seed);
        write_file(path, hive.bytes);
        if (!hive_reader(path).is_open())
            continue;
        ++opened;
        if (!hive.damages.isEmpty())
            ++damaged_and_opened;
    }
    qInfo("%d of %d hives open, %d of them damaged", opened, hives, damaged_and_opened);
    QVERIFY(opened > hives * 8 / 10);
    QVERIFY(damaged_and_opened > hives / 2);
}

void tst_hive_generator::reads_choices_in_their_bounds()
{
    byte_choices choices(random_bytes(1, 40000));
    QSet<qint64> numbers;
    int hits = 0;
    for (int i = 0; i < 4000; ++i) {
        const qint64 number = choices.between(-3, 3);
        QVERIFY(number >= -3 && number <= 3);
        numbers.insert(number);
        hits += choices.one_in(8) ? 1 : 0;
    }
    QCOMPARE(numbers.size(), 7);
    QVERIFY(hits > 250 && hits < 750);

    byte_choices whole(QByteArray(8, '\xff'));
    QCOMPARE(whole.up_to(std::numeric_limits<quint64>::max()), std::numeric_limits<quint64>::max());
    byte_choices wide(QByteArray(8, '\0'));
    QCOMPARE(wide.between(std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()),
             std::numeric_limits<qint64>::min());
    byte_choices repeated("ab");
    QCOMPARE(repeated.bytes(5), QByteArray("ababa"));

    byte_choices first("abc");
    byte_choices part = first.part(2);
    QCOMPARE(part.byte(), quint8('a'));
    QCOMPARE(first.byte(), quint8('c'));
    QVERIFY(first.is_used_up());
    QVERIFY(first.part(2).is_used_up());
}

void tst_hive_generator::gives_the_first_choice_when_used_up()
{
    byte_choices choices{QByteArray()};
    QVERIFY(choices.is_used_up());
    QCOMPARE(choices.byte(), quint8(0));
    QCOMPARE(choices.between(5, 9), 5);
    QCOMPARE(choices.pick(QList<int>{3, 1, 2}), 3);
    QVERIFY(!choices.one_in(2));
    QCOMPARE(choices.bytes(3), QByteArray(3, '\0'));
}

void tst_hive_generator::makes_the_same_random_bytes_everywhere()
{
    QCOMPARE(random_bytes(1, 8).size(), 8);
    QCOMPARE(random_bytes(1, 8), random_bytes(1, 16).left(8));
    QVERIFY(random_bytes(1, 8) != random_bytes(2, 8));
    QCOMPARE(random_bytes(7, 8).toHex(), QByteArray("edd86fb4f2f0f807"));
}

TEST_MAIN(tst_hive_generator)
#include "tst_hive_generator.moc"
