#include "volume_generator.h"

#include "hive_generator.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

using maker = void (*)(evidence_volume &, const QString &path, byte_choices &, hive_kind);

void make_nothing(evidence_volume &, const QString &, byte_choices &, hive_kind) {}

void make_hive(evidence_volume &volume, const QString &path, byte_choices &choices, hive_kind kind)
{
    volume.file(path, generate_hive(choices, kind).bytes);
}

void make_linked_hive(evidence_volume &volume, const QString &path, byte_choices &choices,
                      hive_kind kind)
{
    make_hive(volume, path + u".hive"_s, choices, kind);
    volume.link(path, volume.path(path + u".hive"_s));
}

void make_other_file(evidence_volume &volume, const QString &path, byte_choices &choices, hive_kind)
{
    volume.file(path, choices.bytes(choices.pick(QList<qsizetype>{0, 1, 4095, 4096, 8192})));
}

void make_folder_there(evidence_volume &volume, const QString &path, byte_choices &, hive_kind)
{
    volume.folder(path);
}

void make_fifo(evidence_volume &volume, const QString &path, byte_choices &, hive_kind)
{
    volume.fifo(path);
}

void make_link_loop(evidence_volume &volume, const QString &path, byte_choices &, hive_kind)
{
    volume.link(path, volume.path(path));
}

void place_hive(evidence_volume &volume, const QString &path, byte_choices &choices, hive_kind kind)
{
    static const QList<maker> others{make_nothing, make_other_file, make_folder_there,
                                     make_fifo,    make_link_loop,  make_linked_hive};
    const maker make = choices.one_in(8) ? choices.pick(others) : make_hive;
    make(volume, path, choices, kind);
}

void make_packages(evidence_volume &volume, const QString &folder, byte_choices &choices)
{
    static const QList<QString> names{u"Package_1"_s, u" blank "_s,    u"\u4e2d\u6587"_s,
                                      u".hidden"_s,   u"line\nfeed"_s, u"'quoted'"_s};
    if (choices.one_in(8))
        return;
    volume.folder(folder);
    const qint64 count = choices.between(1, 4);
    for (qint64 i = 0; i < count; ++i)
        place_hive(volume, folder + u'/' + choices.pick(names) + QString::number(i), choices,
                   hive_kind::user);
    if (choices.one_in(4))
        volume.raw_folder(folder.toUtf8() + "/\xff\xfe");
}

void make_account(evidence_volume &volume, const QString &account, byte_choices &choices)
{
    const QString home = u"Users/"_s + account;
    place_hive(volume, home + u"/NTUSER.DAT"_s, choices, hive_kind::user);
    make_packages(volume, home + u"/AppData/Local/Packages"_s, choices);
}

} // namespace

QStringList generate_volume(evidence_volume &volume, byte_choices &choices)
{
    const QString config = u"Windows/System32/config/"_s;
    place_hive(volume, config + u"SOFTWARE"_s, choices, hive_kind::software);
    if (choices.one_in(2))
        place_hive(volume, config + u"RegBack/SOFTWARE"_s, choices, hive_kind::software);

    QStringList accounts{u"ann"_s, u"\u0410\u043d\u043d\u0430 B."_s, u" "_s};
    accounts = accounts.mid(0, choices.between(1, accounts.size()));
    for (const QString &account : std::as_const(accounts))
        make_account(volume, account, choices);
    if (choices.one_in(4))
        accounts << u".."_s << u""_s << u"nobody"_s << u"ann"_s;
    return accounts;
}

} // namespace evidence
