#include "registry_data.h"
#include "test_main.h"
#include "typed_text.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;

// Data decoded as their registry type says.
class tst_typed_text : public QObject
{
    Q_OBJECT

private slots:
    void decodes_each_type_data();
    void decodes_each_type();
    void leaves_others_alone_data();
    void leaves_others_alone();
};

void tst_typed_text::decodes_each_type_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("has_replacements");
    const auto row = [](const char *name, int type, const QByteArray &data, const QString &text,
                        bool has_replacements = false) {
        QTest::newRow(name) << type << data << text << has_replacements;
    };
    const QString high = QChar(0xd83d);
    const QString low = QChar(0xde00);
    row("German", reg_sz, registry_text(u"Büro für Müller"_s), u"Büro für Müller"_s);
    row("Russian", reg_sz, registry_text(u"Яндекс Браузер"_s), u"Яндекс Браузер"_s);
    row("Chinese", reg_expand_sz, registry_text(u"微信"_s), u"微信"_s);
    row("Arabic", reg_link, registry_text(u"مرحبا"_s), u"مرحبا"_s);
    row("beyond the basic plane", reg_sz, registry_text(high + low), high + low);
    row("half of a pair", reg_sz, registry_text(u"a"_s + high), u"a\ufffd"_s, true);
    row("the other half", reg_sz, registry_text(low + u"b"_s), u"\ufffdb"_s, true);
    row("halves in the wrong order", reg_sz, registry_text(low + high), u"\ufffd\ufffd"_s, true);
    row("half of a pair behind the end", reg_sz, registry_text(u"a"_s) + utf16le(high), u"a"_s);
    row("no data", reg_sz, {}, u""_s);
    row("one byte", reg_sz, "a", u""_s);
    row("an odd last byte", reg_sz, utf16le(u"ab"_s) + "c", u"ab"_s);
    row("no zero at the end", reg_sz, utf16le(u"ab"_s), u"ab"_s);
    row("something behind the zero", reg_sz, registry_text(u"ab"_s) + utf16le(u"cd"_s), u"ab"_s);
    row("a zero byte within a unit", reg_sz, utf16le(u"Āa"_s), u"Āa"_s);
    row("a byte order mark", reg_sz, registry_text(u"\ufeffa"_s), u"\ufeffa"_s);
    row("a list", reg_multi_sz, registry_multi_text({u"eins"_s, u"zwölf"_s}), u"eins; zwölf"_s);
    row("a list of one", reg_multi_sz, registry_multi_text({u"one"_s}), u"one"_s);
    row("an empty list", reg_multi_sz, registry_multi_text({}), u""_s);
    row("a list without an end", reg_multi_sz, utf16le(u"a\0b"_s), u"a; b"_s);
    row("a list that goes on behind its end", reg_multi_sz, utf16le(u"a\0\0b\0\0"_s), u"a"_s);
    row("a list with half of a pair", reg_multi_sz, registry_multi_text({u"a"_s, low}),
        u"a; \ufffd"_s, true);
    row("a number", reg_dword, registry_dword(4000000000), u"4000000000"_s);
    row("a number in the other order", reg_dword_big_endian, QByteArray::fromHex("00000102"),
        u"258"_s);
    row("a long number", reg_qword, registry_qword(~quint64(0)), u"18446744073709551615"_s);
}

void tst_typed_text::decodes_each_type()
{
    QFETCH(const int, type);
    QFETCH(const QByteArray, data);
    const auto decoded = text_by_type(data, type);
    QVERIFY(decoded);
    QTEST(decoded->text, "text");
    QTEST(decoded->has_replacements, "has_replacements");
}

void tst_typed_text::leaves_others_alone_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("no type") << int(reg_none) << registry_text(u"text"_s);
    QTest::newRow("bytes") << int(reg_binary) << registry_text(u"text"_s);
    QTest::newRow("an unknown type") << 99 << registry_text(u"text"_s);
    QTest::newRow("a type beyond all") << -1 << registry_text(u"text"_s);
    QTest::newRow("a short number") << int(reg_dword) << QByteArray("abc");
    QTest::newRow("an empty number") << int(reg_dword) << QByteArray();
    QTest::newRow("a number that is too long") << int(reg_dword) << registry_qword(1);
    QTest::newRow("a short long number") << int(reg_qword) << registry_dword(1);
}

void tst_typed_text::leaves_others_alone()
{
    QFETCH(const int, type);
    QFETCH(const QByteArray, data);
    QVERIFY(!text_by_type(data, type));
}

TEST_MAIN(tst_typed_text)
#include "tst_typed_text.moc"
