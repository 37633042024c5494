#include "console.h"

#include "characters.h"
#include "finding.h"

using namespace Qt::StringLiterals;

namespace {

QString escaped(QChar character)
{
    const uint code = character.unicode();
    return code < 0x100 ? u"\\x%1"_s.arg(code, 2, 16, QChar(u'0'))
                        : u"\\u%1"_s.arg(code, 4, 16, QChar(u'0'));
}

bool is_pair_at(const QString &text, qsizetype index)
{
    return index + 1 < text.size() && text.at(index).isHighSurrogate() &&
           text.at(index + 1).isLowSurrogate();
}

void write_bytes(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

bool must_be_escaped(QChar character)
{
    return results::must_be_escaped(character.unicode());
}

QString printable(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (is_pair_at(text, i))
            result += text.mid(i++, 2);
        else
            result += must_be_escaped(text.at(i)) ? escaped(text.at(i)) : QString(text.at(i));
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

void print_warnings(const QStringList &warnings)
{
    for (const QString &warning : summed_up(warnings))
        print_notice("warning: "_L1 + warning);
}
