#include "case_blind_paths.h"
#include "evidence_volume.h"
#include "test_main.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;

// Paths of a volume looked up without regard to letter case. On a file system that ignores it by
// itself, names that differ in it alone cannot stand side by side.
class tst_case_blind_paths : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void finds_a_path_data();
    void finds_a_path();
    void leaves_a_path_as_it_is_data();
    void leaves_a_path_as_it_is();
    void tries_the_exact_name_first();
    void tells_of_a_folder_whose_name_has_a_placeholder();
    void tries_other_names_in_the_order_of_their_code_points();
    void goes_back_where_a_name_leads_nowhere();
    void finds_all_in_the_order_in_which_they_are_tried();
    void tells_of_each_choice_once();
    void lists_a_folder_once();
    void passes_through_a_folder_that_cannot_be_listed();
    void stops_at_a_link_to_itself();
};

namespace {

QString found(const evidence_volume &volume, const QString &path, QStringList *told = nullptr)
{
    case_blind_paths paths(volume.root());
    const QString place = paths.find(volume.path(path), [&](const QString &text) {
        if (told != nullptr)
            told->append(text);
    });
    return place.startsWith(volume.root()) ? place.mid(volume.root().size()) : place;
}

} // namespace

void tst_case_blind_paths::initTestCase()
{
    evidence_volume volume;
    volume.file(u"a"_s);
    if (QFile::exists(volume.path(u"A"_s)))
        QSKIP("this file system ignores letter case by itself");
}

void tst_case_blind_paths::finds_a_path_data()
{
    QTest::addColumn<QString>("on_volume");
    QTest::addColumn<QString>("asked");
    const auto row = [](const char *name, const QString &on_volume, const QString &asked) {
        QTest::newRow(name) << on_volume << asked;
    };
    row("as it is spelt", u"Users/ann/NTUSER.DAT"_s, u"Users/ann/NTUSER.DAT"_s);
    row("a file", u"Users/ann/ntuser.dat"_s, u"Users/ann/NTUSER.DAT"_s);
    row("every part", u"WINDOWS/system32/Config/software"_s, u"Windows/System32/config/SOFTWARE"_s);
    row("Greek", u"ΑΒΓ/final ς"_s, u"αβγ/FINAL Σ"_s);
    row("Cyrillic", u"Яндекс"_s, u"яНДЕКС"_s);
    row("umlauts", u"Büro"_s, u"BÜRO"_s);
    row("beyond the basic plane", u"\U00010400"_s, u"\U00010428"_s);
    row("the sign of Kelvin", u"\u212a"_s, u"k"_s);
}

void tst_case_blind_paths::finds_a_path()
{
    QFETCH(const QString, on_volume);
    QFETCH(const QString, asked);
    evidence_volume volume;
    volume.file(on_volume);
    QCOMPARE(found(volume, asked), on_volume);
}

void tst_case_blind_paths::leaves_a_path_as_it_is_data()
{
    QTest::addColumn<QString>("asked");
    QTest::newRow("nothing there") << u"users/bob"_s;
    QTest::newRow("nothing below") << u"users/ann/ntuser.dat/x"_s;
    QTest::newRow("a sharp s is no two letters") << u"MASSE"_s;
    QTest::newRow("a part that goes up") << u"users/../USERS/ann"_s;
    QTest::newRow("a part that stays") << u"./USERS"_s;
    QTest::newRow("the root") << u""_s;
}

void tst_case_blind_paths::leaves_a_path_as_it_is()
{
    QFETCH(const QString, asked);
    evidence_volume volume;
    volume.file(u"Users/ann/NTUSER.DAT"_s).file(u"Maße"_s);
    QCOMPARE(found(volume, asked), asked);
    case_blind_paths elsewhere(volume.path(u"Users/"_s));
    const QString outside = volume.path(u"MASSE"_s);
    QCOMPARE(elsewhere.find(outside, [](const QString &) {}), outside);
    case_blind_paths without_slash(volume.root().chopped(1));
    const QString file = volume.path(u"users/ANN/NTUSER.DAT"_s);
    QCOMPARE(without_slash.find(file, [](const QString &) {}), file);
}

void tst_case_blind_paths::tries_the_exact_name_first()
{
    evidence_volume volume;
    volume.file(u"USERS/x"_s).file(u"users/x"_s).file(u"Users/x"_s);
    QStringList told;
    QCOMPARE(found(volume, u"users/X"_s, &told), u"users/x"_s);
    QCOMPARE(told, QStringList{volume.root() + u": 3 names differ from users in their letter case "
                                               "alone; users comes first"_s});
}

// Collectors name the folder of a volume so.
void tst_case_blind_paths::tells_of_a_folder_whose_name_has_a_placeholder()
{
    evidence_volume volume;
    volume.file(u"C%3A/USERS/x"_s).file(u"C%3A/users/x"_s);
    QStringList told;
    QCOMPARE(found(volume, u"C%3A/Users/x"_s, &told), u"C%3A/USERS/x"_s);
    QCOMPARE(told,
             QStringList{volume.root() + u"C%3A/: 2 names differ from Users in their letter case "
                                         "alone; USERS comes first"_s});
}

void tst_case_blind_paths::tries_other_names_in_the_order_of_their_code_points()
{
    evidence_volume volume;
    volume.file(u"users/x"_s).file(u"USERS/x"_s).file(u"UsErS/x"_s);
    QCOMPARE(found(volume, u"Users/x"_s), u"USERS/x"_s);
    // UTF-16 would sort the first of these behind the second.
    evidence_volume planes;
    planes.file(u"\U00010400\uff21"_s).file(u"\U00010428\uff21"_s);
    QCOMPARE(found(planes, u"\U00010428\uff41"_s), u"\U00010400\uff21"_s);
}

void tst_case_blind_paths::goes_back_where_a_name_leads_nowhere()
{
    evidence_volume volume;
    volume.folder(u"Windows/System32"_s).file(u"WINDOWS/system32/config/SOFTWARE"_s);
    QCOMPARE(found(volume, u"Windows/System32/config/SOFTWARE"_s),
             u"WINDOWS/system32/config/SOFTWARE"_s);
}

void tst_case_blind_paths::finds_all_in_the_order_in_which_they_are_tried()
{
    evidence_volume volume;
    volume.file(u"users/X"_s).file(u"users/x"_s).file(u"USERS/x"_s).file(u"Users/y"_s);
    case_blind_paths paths(volume.root());
    const auto all = [&](const QString &path) {
        return paths.find_all(volume.path(path)).replaceInStrings(volume.root(), QString());
    };
    QCOMPARE(all(u"users/x"_s), (QStringList{u"users/x"_s, u"users/X"_s, u"USERS/x"_s}));
    QCOMPARE(all(u"Users/Y"_s), QStringList{u"Users/y"_s});
    QCOMPARE(all(u"Users/z"_s), QStringList());
    QCOMPARE(all(u"Users/../Users/y"_s), QStringList());
}

void tst_case_blind_paths::tells_of_each_choice_once()
{
    evidence_volume volume;
    volume.file(u"users/x\ny"_s).file(u"USERS/X\nY"_s).file(u"USERS/x\nY"_s);
    case_blind_paths paths(volume.root());
    QStringList told;
    const auto tell = [&](const QString &text) { told.append(text); };
    for (int time = 0; time < 2; ++time)
        QCOMPARE(paths.find(volume.path(u"Users/X\ny"_s), tell), volume.path(u"USERS/X\nY"_s));
    QCOMPARE(told.size(), 2);
    QVERIFY(told.last().contains(u"2 names differ from X?y"_s));
}

void tst_case_blind_paths::lists_a_folder_once()
{
    evidence_volume volume;
    volume.file(u"A/x"_s);
    case_blind_paths paths(volume.root());
    const auto ignore = [](const QString &) {};
    QCOMPARE(paths.find(volume.path(u"a/X"_s), ignore), volume.path(u"A/x"_s));
    volume.file(u"A/y"_s);
    QCOMPARE(paths.find(volume.path(u"a/Y"_s), ignore), volume.path(u"a/Y"_s));
    QVERIFY(QFile::remove(volume.path(u"A/x"_s)));
    QCOMPARE(paths.find(volume.path(u"a/X"_s), ignore), volume.path(u"A/x"_s));
}

void tst_case_blind_paths::passes_through_a_folder_that_cannot_be_listed()
{
    evidence_volume volume;
    volume.file(u"closed/Open/X"_s);
    QVERIFY(QFile::setPermissions(volume.path(u"closed"_s), QFile::ExeOwner));
    const QString place = found(volume, u"closed/Open/x"_s);
    QFile::setPermissions(volume.path(u"closed"_s),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(place, u"closed/Open/X"_s);
}

void tst_case_blind_paths::stops_at_a_link_to_itself()
{
    evidence_volume volume;
    volume.link(u"Users"_s, u"Users"_s).link(u"Windows"_s, u"."_s);
    QCOMPARE(found(volume, u"users/ann"_s), u"users/ann"_s);
    QCOMPARE(found(volume, u"windows/WINDOWS/wINDOWS"_s), u"Windows/Windows/Windows"_s);
}

TEST_MAIN(tst_case_blind_paths)
#include "tst_case_blind_paths.moc"
