#include "members/datanavigator.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

DataNavigator::DataNavigator(QWidget* parent)
    : QFrame(parent)
    , m_caption(new QLabel(this)) {
    setFrameShape(QFrame::StyledPanel);
    m_caption->setObjectName(u"Caption"_s);
    m_caption->setAlignment(Qt::AlignCenter);
    m_caption->setMinimumWidth(150);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    auto button = [this](const QString& name, const QString& text,
                         void (DataNavigator::*signal)()) {
        auto* b = new QToolButton(this);
        b->setObjectName(name);
        b->setText(text);
        b->setAutoRaise(false);
        connect(b, &QToolButton::clicked, this, signal);
        return b;
    };
    layout->addWidget(button(u"First"_s, u"|<"_s, &DataNavigator::firstRequested));
    layout->addWidget(button(u"Previous"_s, u"<"_s, &DataNavigator::previousRequested));
    layout->addWidget(m_caption, 1);
    layout->addWidget(button(u"Next"_s, u">"_s, &DataNavigator::nextRequested));
    layout->addWidget(button(u"Last"_s, u">|"_s, &DataNavigator::lastRequested));
}

void DataNavigator::setCaption(const QString& caption) {
    m_caption->setText(caption);
}

QString DataNavigator::caption() const {
    return m_caption->text();
}

} // namespace pondar
