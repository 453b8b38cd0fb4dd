// A host program as an outside project writes it: only the installed headers and package.
#include <pondar/currency.h>
#include <pondar/genclass.h>

#include <cstdio>

int main() {
    pondar::GenClass component;
    const pondar::Currency amount = pondar::Currency::fromDouble(12.5);
    std::puts(amount.format().toUtf8().constData());
    return amount.format() == QStringLiteral("12.50") ? 0 : 1;
}
