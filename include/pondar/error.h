#pragma once

#include <pondar/pondar_export.h>

#include <QString>

#include <stdexcept>

namespace pondar {

// The one exception type of the component. Screens catch it at their handlers and show its text
// in a "Message" box; StartApp lets it reach the host where a call cannot go on.
class PONDAR_EXPORT Error : public std::runtime_error {
public:
    explicit Error(const QString& message);
    QString message() const;
};

// A money value out of range or an amount that is not a number where one is needed.
class PONDAR_EXPORT CurrencyError final : public Error {
public:
    using Error::Error;
};

} // namespace pondar
