#ifndef VALUE_TEXT_H
#define VALUE_TEXT_H

#include <QString>

/// Returns the data of a value, `length` bytes from `begin` on, as text: every zero byte is
/// dropped and the rest decoded as local 8-bit text. Alters the bytes.
QString text_of_data(char *begin, qsizetype length);

#endif
