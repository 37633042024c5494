#include "volume_generator.h"

#include "hive_generator.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

/// What places files in a volume.
struct volume_in_making
{
    evidence_volume &volume;
    byte_choices &choices;
    const QVariantList &artifacts; ///< whose keys the hives have
};

using maker = void (*)(const volume_in_making &, const QString &path, hive_kind);

void make_nothing(const volume_in_making &, const QString &, hive_kind) {}

void make_hive(const volume_in_making &made, const QString &path, hive_kind kind)
{
    made.volume.file(path, generate_hive(made.choices, kind, made.artifacts).bytes);
}

void make_linked_hive(const volume_in_making &made, const QString &path, hive_kind kind)
{
    make_hive(made, path + u".hive"_s, kind);
    made.volume.link(path, made.volume.path(path + u".hive"_s));
}

void make_other_file(const volume_in_making &made, const QString &path, hive_kind)
{
    const QList<qsizetype> sizes{0, 1, 4095, 4096, 8192};
    made.volume.file(path, made.choices.bytes(made.choices.pick(sizes)));
}

void make_folder_there(const volume_in_making &made, const QString &path, hive_kind)
{
    made.volume.folder(path);
}

void make_fifo(const volume_in_making &made, const QString &path, hive_kind)
{
    made.volume.fifo(path);
}

void make_link_loop(const volume_in_making &made, const QString &path, hive_kind)
{
    made.volume.link(path, made.volume.path(path));
}

void place_hive(const volume_in_making &made, const QString &path, hive_kind kind)
{
    static const QList<maker> others{make_nothing, make_other_file, make_folder_there,
                                     make_fifo,    make_link_loop,  make_linked_hive};
    const maker make = made.choices.one_in(8) ? made.choices.pick(others) : make_hive;
    make(made, path, kind);
}

void make_packages(const volume_in_making &made, const QString &folder)
{
    static const QList<QString> names{u"Package_1"_s, u" blank "_s,    u"\u4e2d\u6587"_s,
                                      u".hidden"_s,   u"line\nfeed"_s, u"'quoted'"_s};
    if (made.choices.one_in(8))
        return;
    made.volume.folder(folder);
    const qint64 count = made.choices.between(1, 4);
    for (qint64 i = 0; i < count; ++i)
        place_hive(made, folder + u'/' + made.choices.pick(names) + QString::number(i),
                   hive_kind::user);
    if (made.choices.one_in(4))
        made.volume.raw_folder(folder.toUtf8() + "/\xff\xfe");
}

void make_account(const volume_in_making &made, const QString &account)
{
    const QString home = u"Users/"_s + account;
    place_hive(made, home + u"/NTUSER.DAT"_s, hive_kind::user);
    make_packages(made, home + u"/AppData/Local/Packages"_s);
}

} // namespace

QStringList generate_volume(evidence_volume &volume, byte_choices &choices,
                            const QVariantList &artifacts)
{
    const volume_in_making made{volume, choices, artifacts};
    const QString config = u"Windows/System32/config/"_s;
    place_hive(made, config + u"SOFTWARE"_s, hive_kind::software);
    if (choices.one_in(2))
        place_hive(made, config + u"RegBack/SOFTWARE"_s, hive_kind::software);

    QStringList accounts{u"ann"_s, u"\u0410\u043d\u043d\u0430 B."_s, u" "_s};
    accounts = accounts.mid(0, choices.between(1, accounts.size()));
    for (const QString &account : std::as_const(accounts))
        make_account(made, account);
    if (choices.one_in(4))
        accounts << u".."_s << u""_s << u"nobody"_s << u"ann"_s;
    return accounts;
}

} // namespace evidence
