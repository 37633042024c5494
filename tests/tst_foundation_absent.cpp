#include "log_capture.h"
#include "log_line.h"
#include "test_main.h"

#include "plugin_static_function.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

QString failure_line(const QString &member)
{
    return library_line(member, u'[' + member + u"]-----FAILED----- to get value: "_s);
}

} // namespace

// The build without Foundation: every reader fails by its line.
class tst_foundation_absent : public QObject
{
    Q_OBJECT

private slots:
    void readers_log_their_failure_line();
    void conversions_give_the_empty_text();
};

void tst_foundation_absent::readers_log_their_failure_line()
{
    const int object = 0;
    const log_capture log;
    QCOMPARE(library::get_nsstring_values(&object, &object), QString());
    QCOMPARE(library::get_nsnumber_values(&object, &object), QString());
    QCOMPARE(library::get_nsnumber_values_yes_no(&object, &object), QString());
    QCOMPARE(library::get_nsstring_key_and_values(&object, &object, u"a"_s), QString());
    QCOMPARE(library::get_nsnumber_key_and_values(&object, &object, u"a"_s), QString());
    QCOMPARE(library::get_nsnumber_key_and_value_yes_no(&object, &object, u"a"_s), QString());
    QCOMPARE(library::get_nsarray_key_and_values(&object, &object, u"a"_s), QString());
    QCOMPARE(
        log.lines(),
        (QStringList{failure_line(u"get_nsstring_values"_s), failure_line(u"get_nsnumber_values"_s),
                     failure_line(u"get_nsnumber_values_yes_no"_s),
                     failure_line(u"get_nsstring_values"_s), failure_line(u"get_nsnumber_values"_s),
                     failure_line(u"get_nsnumber_values_yes_no"_s),
                     failure_line(u"get_nsarray_key_and_values"_s)}));
}

void tst_foundation_absent::conversions_give_the_empty_text()
{
    const int object = 0;
    QCOMPARE(library::convert_cfstring_to_qstring(&object), QString());
    QCOMPARE(library::convert_nsdate_to_epoch(&object), QString());
}

TEST_MAIN(tst_foundation_absent)
#include "tst_foundation_absent.moc"
