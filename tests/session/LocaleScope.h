#pragma once

#include <QLocale>

namespace vx::test {

// Conversions and formats follow the user's locale: a test picks one and gets the old one back.
class LocaleScope {
public:
    explicit LocaleScope(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleScope() { QLocale::setDefault(m_previous); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    QLocale m_previous;
};

} // namespace vx::test
