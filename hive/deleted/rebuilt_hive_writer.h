#ifndef REBUILT_HIVE_WRITER_H
#define REBUILT_HIVE_WRITER_H

#include "rebuilt_hive.h"

/// Writes the cells of a rebuilt hive. A helper of rebuilt_hive.
class rebuilt_hive_writer
{
public:
    explicit rebuilt_hive_writer(const std::deque<rebuilt_hive::key> &keys);

    QByteArray bytes();

private:
    qint64 add(QByteArray cell);
    void end_bin();
    void add_security();
    void add_key(const rebuilt_hive::key &key);
    void add_values(const rebuilt_hive::key &key, qint64 place);
    qint64 add_value(const rebuilt_hive::value &value);
    void add_subkeys(const rebuilt_hive::key &key, qint64 place);
    qint64 add_list(const char *signature, const std::vector<qint64> &cells);
    void write_base_block();

    const std::deque<rebuilt_hive::key> &m_keys;
    QByteArray m_bytes;
    qint64 m_bin_end = 0;
    qint64 m_security = 0;
    std::vector<qint64> m_places; ///< of the keys
};

#endif
