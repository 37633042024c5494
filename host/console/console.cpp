#include "console.h"

#include "characters.h"
#include "finding.h"

using namespace Qt::StringLiterals;

namespace {

QString escaped(char32_t character)
{
    const auto in_hex = [character](const QString &form, int digits) {
        return form.arg(uint(character), digits, 16, QChar(u'0'));
    };
    if (character < 0x100)
        return in_hex(u"\\x%1"_s, 2);
    return character < 0x1'0000 ? in_hex(u"\\u%1"_s, 4) : in_hex(u"\\U%1"_s, 8);
}

bool is_pair_at(const QString &text, qsizetype index)
{
    return index + 1 < text.size() && text.at(index).isHighSurrogate() &&
           text.at(index + 1).isLowSurrogate();
}

char32_t character_at(const QString &text, qsizetype index)
{
    return is_pair_at(text, index) ? QChar::surrogateToUcs4(text.at(index), text.at(index + 1))
                                   : char32_t(text.at(index).unicode());
}

void write_bytes(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

QString printable(const QString &text)
{
    QString result;
    qsizetype units = 1;
    for (qsizetype i = 0; i < text.size(); i += units) {
        const char32_t character = character_at(text, i);
        units = QChar::requiresSurrogates(character) ? 2 : 1;
        result += results::must_be_escaped(character) ? escaped(character) : text.mid(i, units);
    }
    return result;
}

void write_line(std::FILE *stream, const QString &line)
{
    write_bytes(stream, line.toLocal8Bit() + '\n');
}

void redraw_line(std::FILE *terminal, const QString &text)
{
    // Back to the first column, then erase to the end of the line.
    write_bytes(terminal, '\r' + text.toLocal8Bit() + "\x1b[K");
}

void print_notice(const QString &text)
{
    write_line(stderr, "artifact_host: "_L1 + printable(text));
}

exit_code refuse(const refusal &refused)
{
    print_notice(refused.reason);
    return refused.code;
}

void print_warnings(const QStringList &warnings)
{
    for (const QString &warning : summed_up(warnings))
        print_notice("warning: "_L1 + warning);
}
