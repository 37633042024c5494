#ifndef REGISTRY_H
#define REGISTRY_H

#include "guarded_hive.h"
#include "hive_pool.h"
#include "recent_names.h"
#include "unread_places.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

struct hive_h;

/// Base of the registry walkers: opens one offline hive through libhivex, descends to a key, and
/// reads that key's values or enumerates its subkeys, handing every value to a per-value hook.
/// Subclasses give the hook its meaning and fill the typed record lists. A walker is used by one
/// thread at a time; a hive that cannot be read yields no records and no message.
///
/// The order of the virtual operations is fixed. Node and value handles are libhivex's (offsets in
/// the hive file); in maps and int arguments they are carried as their low 32 bits. The handle 0
/// stands for a missing key, which has no name, no values and no subkeys.
class registry
{
public:
    /// One value of a key.
    struct struct_data
    {
        QString name;    ///< value name
        QString value;   ///< value data as text
        QByteArray data; ///< raw value data
    };

    /// One subkey of a key that lists applications; texts are empty where it has no such value.
    struct struct_installed_apps
    {
        QString key_name;           ///< name of the application's subkey
        QString publisher;          ///< value "Publisher"
        QString display_name;       ///< value "DisplayName"
        QString display_version;    ///< value "DisplayVersion"
        QString install_location;   ///< value "InstallLocation"
        QString install_date;       ///< value "InstallDate", as stored (usually YYYYMMDD)
        QString install_source;     ///< value "InstallSource"
        QString url_info_about;     ///< value "URLInfoAbout"
        QString uninstall_string;   ///< value "UninstallString"
        QString modified_timestamp; ///< last-write time of the subkey, decimal Unix seconds
    };

    /// One value below a UserAssist class id.
    struct struct_user_asist
    {
        QString class_id;      ///< name of the subkey of UserAssist, a GUID in braces
        QString value_name;    ///< value name as stored, letter-rotated
        QByteArray value_data; ///< raw value data
    };

    /// One value of a desktop NameSpace key.
    struct struct_hidden_icons
    {
        QString name;    ///< not filled
        QString value;   ///< value data as text
        QByteArray data; ///< not filled
    };

    registry();
    registry(const registry &) = delete;
    registry &operator=(const registry &) = delete;
    virtual ~registry();

    /// Walks one key of one hive, the entry point of a walk.
    /// `hive_path`: the hive file; only a regular file is opened, for reading.
    /// `key_path`: keys separated by backslashes, matched without regard to case; empty parts are
    /// dropped, and a single backslash is the root key.
    /// `read_key_values`: true reads the values of the key itself, false walks its subkeys.
    /// Returns 0 when the hive was opened, whatever was found in it; -1 when a path is empty or the
    /// hive or its root cannot be opened. Records are appended to those of earlier calls.
    virtual int start_registry_parse(QString hive_path, QString key_path, bool read_key_values);

    /// Descends from `start_node` along `key_path`; returns 0 when a key on the way is missing.
    virtual unsigned long get_user_node_handle(hive_h *hive, QString key_path,
                                               unsigned long start_node);

    /// Hands every value of `node` to find_node_value_length(), in hive order; stops at the first
    /// value whose name cannot be read.
    virtual void values_of_the_node(hive_h *hive, unsigned long node);

    /// Appends one record for each subkey of `node`, its descendants' values included. A field
    /// that a later sibling does not set keeps the value of an earlier one.
    /// Returns whether `node` has subkeys.
    virtual bool run_only_multiple(hive_h *hive, int node);

    /// Walks the subkeys of the start key: one record for each that has no subkeys of its own,
    /// run_only_multiple() for the others.
    virtual void run_only_multiple_paths(hive_h *hive, unsigned long node);

    /// Lists the direct subkeys of `node`, ordered by name (by UTF-16 code unit); names that
    /// cannot be read are left out, of equal names the last stays. With `read_child_values` every
    /// subkey's values go to the hook while current_key_name holds the subkey's name.
    virtual QMap<QString, int> prepare_the_node_key_child(hive_h *hive, unsigned long node,
                                                          bool read_child_values);

    /// Reads the first 4 bytes of `buffer` as a little-endian number; `length` is ignored.
    virtual quint32 htoi(unsigned char *buffer, int length);

    /// Reads the first 8 bytes of `buffer` as a little-endian number; `length` is ignored.
    virtual qint64 htoll(unsigned char *buffer, int length);

    /// Converts the little-endian FILETIME at the start of `bytes` to Unix seconds, truncated
    /// toward zero; bytes that are missing count as zero.
    virtual qint64 epoc_time_conversion(QByteArray bytes);

    /// Returns the data of `value` as text: every zero byte is dropped and the rest decoded as
    /// local 8-bit text, whatever the value's type. Empty when the data cannot be read.
    virtual QString convert_data(hive_h *hive, unsigned long value);

    /// Hands the values of every key below `node`, at any depth, to the hook, each key once.
    /// `children`: the subkeys of `node` when their values have been read already, else empty.
    /// Neither a loop nor the depth of the hive can keep it from ending.
    virtual void run_only_multiple_recurse(hive_h *hive, int node, QMap<QString, int> children);

    /// The per-value hook; does nothing here. Subclasses store `value`, named `value_name`, in
    /// the record that their current-record pointer designates.
    virtual void find_node_value_length(hive_h *hive, unsigned long value, QString value_name);

    /// Returns the raw data of `value` in subclasses; empty here. The int is ignored.
    virtual QByteArray convert_data(hive_h *hive, unsigned long value, int unused);

    /// Returns the registry type code of `value` in subclasses; 0 here. The text is ignored.
    virtual int convert_data(hive_h *hive, unsigned long value, QString unused);

    /// Converts a FILETIME (100 ns units since 1601-01-01 UTC) to Unix seconds, truncated toward
    /// zero.
    static qint64 unix_seconds(qint64 filetime);

    /// The key at which the last walk ended early, as its path below the root or "the root key".
    /// Empty when the walk was complete. A walk ends early when the hive lets the same bytes be
    /// read again and again; no hive that Windows wrote does that. Records read before are kept.
    const QString &early_end() const { return m_early_end; }

    /// From now on value_text() decodes data by their type, as text_by_type() does, wherever that
    /// knows the type. By default no type is looked at.
    void decode_by_type() { m_decodes_by_type = true; }

    /// From now on hives are walked in `hives`, which keeps them open for later walks and must
    /// outlive this walker. By default each walk opens its hive and closes it again.
    void keep_open_in(hive_pool &hives) { m_hive_pool = &hives; }

    /// How many texts of the last walk had half of a surrogate pair, which became U+FFFD. Always 0
    /// unless data are decoded by type.
    qint64 replaced_texts() const { return m_replaced_texts; }

    /// What the last walk could not read of the keys that it lists. What follows an early end is
    /// not among it.
    const unread_places &unread() const { return m_unread; }

    QList<struct_data> data_records; ///< filled by the walkers that read a key's values
    struct_data *current_data;       ///< the record being filled; null when none is open
    QList<struct_installed_apps> installed_apps_records; ///< filled by the walks over applications
    struct_installed_apps *current_installed_app;        ///< null when none is open
    QList<struct_user_asist> user_assist_records;        ///< filled by the UserAssist walk
    struct_user_asist *current_user_assist;              ///< null when none is open
    QList<struct_hidden_icons> hidden_icons_records;     ///< filled by the NameSpace walk
    struct_hidden_icons *current_hidden_icon;            ///< null when none is open
    QString current_key_name;                            ///< name of the key whose values are read
    QString current_key_timestamp; ///< last-write time of the current key, decimal Unix seconds
    QString parsed_key_path;       ///< key path of the last walk; set by the subclasses

protected:
    /// The frame of every walk: opens the hive, runs `walk` with the root key and closes the hive
    /// again. Returns as start_registry_parse().
    int walk_opened_hive(const QString &hive_path,
                         const std::function<void(hive_h *, unsigned long)> &walk);

    /// The frame of start_registry_parse(): opens the hive, descends, and either runs
    /// `read_key` on the key, with current_key_name set, or run_only_multiple_paths().
    int walk_hive(const QString &hive_path, const QString &key_path, bool read_key_values,
                  const std::function<void(hive_h *, unsigned long)> &read_key);

    /// Reads the values of `node` into `record`, which `current` designates meanwhile, and
    /// returns it.
    template<typename record_type>
    record_type read_record(hive_h *hive, unsigned long node, record_type *registry::*current,
                            record_type record = {})
    {
        this->*current = &record;
        values_of_the_node(hive, node);
        this->*current = nullptr;
        return record;
    }

    /// start_registry_parse() of the walkers whose hook depends on parsed_key_path and appends one
    /// record a value: `current` designates the record that serves all values of the key.
    template<typename record_type>
    int walk_hive_by_key_path(const QString &hive_path, const QString &key_path,
                              bool read_key_values, record_type *registry::*current)
    {
        if (hive_path.isEmpty() || key_path.isEmpty())
            return -1;
        parsed_key_path = key_path;
        return walk_hive(hive_path, key_path, read_key_values,
                         [this, current](hive_h *hive, unsigned long node) {
                             read_record(hive, node, current);
                         });
    }

    /// The node that a handle carried as int stands for.
    static unsigned long handle(int node) { return static_cast<quint32>(node); }

    /// Sets current_key_timestamp from the last-write time of `node`.
    void set_current_key_timestamp(hive_h *hive, unsigned long node);

    /// Returns the raw data of `value`; empty when it cannot be read.
    QByteArray value_bytes(hive_h *hive, unsigned long value);

    /// Returns the data of `value` as text, as convert_data() describes, or by their type.
    QString value_text(hive_h *hive, unsigned long value);

    /// Returns the registry type code of `value`; 0 when it cannot be read.
    int value_type(hive_h *hive, unsigned long value);

    /// Whether the running walk has ended early. A value whose data were not read for that reason
    /// must not become a record, because its data would look empty.
    bool has_ended_early() const { return m_walked != nullptr && m_walked->is_walk_over(); }

    /// Makes get_user_node_handle() list the subkeys of each key only once until the walk ends, and
    /// keep their names. That makes very many descents fast.
    void keep_subkey_names() { m_subkey_names.emplace(); }

private:
    /// The subkeys of some keys by name, in lower case; of equal names the first.
    using subkeys_by_name = QHash<unsigned long, QHash<QByteArray, unsigned long>>;

    guarded_hive *opened(const QString &hive_path);
    void end_walk();
    unguarded_hive &reader_of(hive_h *hive);
    template<typename function>
    void visit_named_subkeys(hive_h *hive, unsigned long node, function visit);
    unsigned long child_named(hive_h *hive, unsigned long node, const QByteArray &wanted);
    unsigned long kept_child_named(hive_h *hive, unsigned long node, const QByteArray &wanted);
    QString key_name(hive_h *hive, unsigned long node); ///< null when it cannot be read
    bool is_walking(hive_h *hive) const;
    void note_unlisted(hive_h *hive, unsigned long node);
    void note_unnamed(hive_h *hive, unsigned long node);
    unread_places::path_function path_function_of(unsigned long node) const;
    bool is_to_be_listed(hive_h *hive, unsigned long parent, int child, const QString &name);
    bool visit_once(int node);
    void descend(hive_h *hive, const QMap<QString, int> &children);

    guarded_hive m_hive;              ///< for walks that open their hive; closed outside of them
    hive_pool *m_hive_pool = nullptr; ///< null when no hive is kept open
    guarded_hive *m_walked = nullptr; ///< the hive being walked; null outside of a walk
    unguarded_hive m_foreign_hive;    ///< for operations that get a handle from somewhere else
    recent_names m_value_names;
    QString m_early_end;
    bool m_decodes_by_type = false;
    qint64 m_replaced_texts = 0;
    unread_places m_unread;
    QSet<unsigned long> m_partly_listed; ///< keys not all of whose subkeys' names could be read
    std::optional<subkeys_by_name> m_subkey_names; ///< of the walk, if it keeps them
    QSet<int> *m_visited_nodes = nullptr; ///< of the recursion that runs; null outside of one
};

#endif
