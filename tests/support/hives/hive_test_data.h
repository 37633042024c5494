#ifndef HIVE_TEST_DATA_H
#define HIVE_TEST_DATA_H

#include "hive_builder.h"
#include "hive_damage.h"

#include <QTest>

namespace test_support {

/// Damages a hive; the builder knows where its cells lie.
using damage_operation = void (*)(evidence::hive_builder &hive, evidence::hive_damage &damage);

/// Adds a row of the column "operation".
inline void add_damage_row(const char *name, damage_operation operation)
{
    QTest::addRow("%s", name) << operation;
}

/// Adds the columns "stored", the name of a key or a value in a hive, and "name", what a walker
/// reads of it.
inline void add_stored_name_rows()
{
    using namespace Qt::StringLiterals;
    QTest::addColumn<evidence::hive_name>("stored");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *row_name, const evidence::hive_name &stored,
                        const QString &name) { QTest::addRow("%s", row_name) << stored << name; };
    row("ASCII", u"Name"_s, u"Name"_s);
    row("Latin-1", u"Grüße ÿ"_s, u"Grüße ÿ"_s);
    row("ASCII in UTF-16", evidence::hive_name::utf16(u"Name"_s), u"Name"_s);
    row("UTF-16", u"Программа 漢字"_s, u"Программа 漢字"_s);
    row("a surrogate pair", u"x\U0001F600"_s, u"x\U0001F600"_s);
    row("separators, control characters and a terminal escape", u"a/b\r\n\t\x1b[31m"_s,
        u"a/b\r\n\t\x1b[31m"_s);
    row("a backslash", u"a\\b"_s, u"a\\b"_s);
    row("no letters", u""_s, u""_s);
    row("cut at a zero byte in Latin-1", evidence::hive_name::raw("ab\0cd"_ba, true), u"ab"_s);
    row("cut at a zero character in UTF-16", evidence::hive_name::raw("a\0\0\0b\0"_ba, false),
        u"a"_s);
    row("a zero byte alone", evidence::hive_name::raw("\0"_ba, true), u""_s);
}

} // namespace test_support

#endif
