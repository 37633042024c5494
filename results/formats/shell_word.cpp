#include "shell_word.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace results {

QString shell_word(const QString &argument)
{
    static const QRegularExpression plain(u"^[\\w./+:@%,=-]+$"_s);
    if (plain.match(argument).hasMatch())
        return argument;
    return u'\'' + QString(argument).replace(u"'"_s, u"'\\''"_s) + u'\'';
}

} // namespace results
