#ifndef KEPT_VALUE_H
#define KEPT_VALUE_H

namespace test_support {

/// Keeps a variable's value and puts it back at destruction.
template<typename type>
class kept_value
{
public:
    explicit kept_value(type &variable) : m_variable(variable), m_value(variable) {}
    ~kept_value() { m_variable = m_value; }
    kept_value(const kept_value &) = delete;
    kept_value &operator=(const kept_value &) = delete;

private:
    type &m_variable;
    type m_value;
};

} // namespace test_support

#endif
