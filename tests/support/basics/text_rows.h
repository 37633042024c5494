#ifndef TEXT_ROWS_H
#define TEXT_ROWS_H

#include <QString>
#include <QTest>

namespace test_support {

/// The columns "text", what a conversion is given, and "result", what has to come of it.
inline void add_text_columns()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
}

/// A row of these columns.
inline void add_row(const char *name, const QString &text, const QString &result)
{
    QTest::newRow(name) << text << result;
}

} // namespace test_support

#endif
