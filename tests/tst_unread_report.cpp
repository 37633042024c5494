#include "unread_report.h"

#include "evidence_volume.h"
#include "test_main.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;

// What the host warns about of the lines in which the plug-in says what it could not read.
class tst_unread_report : public QObject
{
    Q_OBJECT

private slots:
    void warns_once_with_the_path_in_the_volume_data();
    void warns_once_with_the_path_in_the_volume();
};

void tst_unread_report::warns_once_with_the_path_in_the_volume_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("warnings");
    const auto hive = u"%1Users/ann/NTUSER.DAT: %2"_s;
    const auto content = u"the content of A cannot be listed, so it is not read"_s;
    const auto unopened = u": cannot be opened as a registry hive, so it is not read"_s;
    QTest::newRow("nothing") << QStringList() << QStringList();
    QTest::newRow("a hive of the volume")
        << QStringList{hive.arg(u"ROOT"_s, content)} << QStringList{hive.arg(QString(), content)};
    QTest::newRow("two tabs") << QStringList(2, hive.arg(u"ROOT"_s, content))
                              << QStringList{hive.arg(QString(), content)};
    QTest::newRow("a file elsewhere")
        << QStringList{u"/elsewhere: why"_s} << QStringList{u"/elsewhere: why"_s};
    QTest::newRow("a good header of a hive that does not open")
        << QStringList{u"ROOTWindows/System32/config/SOFTWARE"_s + unopened}
        << QStringList{u"Windows/System32/config/SOFTWARE"_s + unopened};
    QTest::newRow("a hive that is known to be unreadable")
        << QStringList{u"ROOTUsers/ann/NTUSER.DAT"_s + unopened} << QStringList();
    QTest::newRow("a hive that is not there")
        << QStringList{u"ROOTUsers/bob/NTUSER.DAT"_s + unopened} << QStringList();
}

void tst_unread_report::warns_once_with_the_path_in_the_volume()
{
    QFETCH(QStringList, lines);
    QFETCH(const QStringList, warnings);
    evidence_volume volume;
    volume.software();
    volume.file(u"Users/ann/NTUSER.DAT"_s, "no hive");
    volume.write();
    const source_volume source(volume.root());
    lines.replaceInStrings(u"ROOT"_s, source.root());
    QCOMPARE(unread_warnings(source, lines), warnings);
}

TEST_MAIN(tst_unread_report)
#include "tst_unread_report.moc"
