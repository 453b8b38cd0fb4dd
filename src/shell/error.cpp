#include <pondar/error.h>

namespace pondar {

Error::Error(const QString& message)
    : std::runtime_error(message.toStdString()) {}

QString Error::message() const {
    return QString::fromUtf8(what());
}

} // namespace pondar
