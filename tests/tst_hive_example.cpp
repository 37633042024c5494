#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_reader.h"
#include "test_main.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The example that the header of the hive builder gives.
class tst_hive_example : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void makes_an_intact_hive();
    void makes_a_damaged_hive();
    void is_the_example_of_the_header();

private:
    QTemporaryDir folder;
};

namespace {

const QString editor_key = u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Editor"_s;

QString text_of(const QString &relative_path)
{
    return QString::fromUtf8(
        read_file(QStringLiteral(PROJECT_SOURCE_FOLDER) + u'/' + relative_path));
}

// The lines that begin with the mark, without it.
QStringList marked_lines(const QString &text, const QString &mark)
{
    QStringList found;
    const QStringList lines = text.split(u'\n');
    for (const QString &line : lines) {
        if (line.startsWith(mark))
            found.append(line.mid(mark.size()));
    }
    return found;
}

} // namespace

void tst_hive_example::initTestCase()
{
    // The example begins here.
    hive_builder hive;
    hive_key &editor = hive.key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Editor"_s);
    editor.text(u"DisplayName"_s, u"Editor 2.1"_s).dword(u"NoModify"_s, 1);
    editor.value(hive_name::utf16(u"Odd"_s), 99, "any bytes").last_write_unix(1700000000);
    hive.key(u"RegisteredApplications"_s).text(u"Editor"_s, u"Software\\Editor"_s);
    hive.root().list_kind(subkey_list::li).add_key(hive_name::lone_surrogate());
    hive.write_to(folder.filePath(u"SOFTWARE"_s));
    hive_damage damage(hive.bytes());
    damage.value_count(hive_builder::offset_of(editor), 4);
    write_file(folder.filePath(u"DAMAGED"_s), damage.bytes());
    // The example ends here.
}

void tst_hive_example::makes_an_intact_hive()
{
    const hive_reader reader(folder.filePath(u"SOFTWARE"_s));
    const QList<read_value> values = {{u"DisplayName"_s, reg_sz, registry_text(u"Editor 2.1"_s)},
                                      {u"NoModify"_s, reg_dword, registry_dword(1)},
                                      {u"Odd"_s, 99, "any bytes"}};
    QCOMPARE(reader.values(editor_key), values);
    QCOMPARE(reader.last_write(editor_key), filetime_of_unix(1700000000));
    QCOMPARE(reader.values(u"RegisteredApplications"_s).size(), 1);
}

void tst_hive_example::makes_a_damaged_hive()
{
    const hive_reader reader(folder.filePath(u"DAMAGED"_s));
    QCOMPARE(reader.values(editor_key), {});
    QCOMPARE(reader.values(u"RegisteredApplications"_s).size(), 1);
}

void tst_hive_example::is_the_example_of_the_header()
{
    const QString own = text_of(u"tests/tst_hive_example.cpp"_s)
                            .section(u"    // The example begins here.\n"_s, 1, 1)
                            .section(u"    // The example ends here.\n"_s, 0, 0);
    const QStringList lines =
        marked_lines(text_of(u"evidence/hive/hive_builder.h"_s), u"///     "_s);
    QCOMPARE(lines.size(), 10);
    QCOMPARE(marked_lines(own, u"    "_s), lines);
}

TEST_MAIN(tst_hive_example)
#include "tst_hive_example.moc"
