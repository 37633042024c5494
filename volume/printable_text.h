#ifndef PRINTABLE_TEXT_H
#define PRINTABLE_TEXT_H

#include <QString>

/// The text with a "?" for each character that could end or reorder a line of the log. Names come
/// from the evidence.
inline QString printable_text(QString text)
{
    for (QChar &character : text) {
        const bool is_line_end =
            character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (is_line_end || (!character.isPrint() && !character.isSurrogate()))
            character = u'?';
    }
    return text;
}

#endif
