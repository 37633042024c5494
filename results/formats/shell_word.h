#ifndef SHELL_WORD_H
#define SHELL_WORD_H

#include <QString>

namespace results {

/// The argument of a command as a POSIX shell takes it: in quotes if it has to be.
QString shell_word(const QString &argument);

} // namespace results

#endif
