#ifndef PAGE_OUTPUT_H
#define PAGE_OUTPUT_H

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

/// The size of a terminal in characters.
struct terminal_size
{
    int columns;
    int lines;
};

/// The size of the terminal behind `stream`; nothing if there is none.
std::optional<terminal_size> size_of_terminal(std::FILE *stream);

/// Standard output. If it is a terminal and the text has more lines than that, they go through a
/// pager: $PAGER, less or more.
class page_output
{
public:
    explicit page_output(bool may_page);
    ~page_output();
    page_output(const page_output &) = delete;
    page_output &operator=(const page_output &) = delete;

    /// Writes on; false if nobody reads any further, or if that failed.
    bool write(std::string_view text);
    /// Writes what was kept back, and waits for the end of the pager.
    void close();
    /// Whether a write failed for another reason than a reader that went away.
    bool has_failed() const { return m_has_failed; }

private:
    bool write_through(std::string_view text);
    void start_pager();

    std::optional<terminal_size> m_terminal;
    bool m_keeps_back = false; ///< whether it is unknown yet if a pager is needed
    std::string m_kept_back;
    std::FILE *m_pager = nullptr;
    bool m_has_failed = false;
    bool m_is_closed = false;
};

#endif
