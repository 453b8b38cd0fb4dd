#include "cardtray.h"

#include <pondar/error.h>

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

QString describe(const pondar::card::SimFolder::Card& card) {
    QString text = u"UID "_s + card.uid;
    if (card.code.isEmpty() && card.name.isEmpty())
        return QString(text + u"  (blank)"_s);
    return QString(text + u"  "_s + card.code + u"  "_s + card.name);
}

} // namespace

CardTray::CardTray(const QString& simDir, QWidget* parent)
    : QGroupBox(u"Card tray ("_s + simDir + u')', parent)
    , m_folder(simDir) {
    setObjectName(u"CardTray"_s);
    m_reader = new QLabel;
    m_reader->setObjectName(u"onReader"_s);
    m_cards = new QListWidget;
    m_cards->setObjectName(u"cards"_s);
    m_put = new QPushButton(u"Put on reader"_s);
    m_put->setObjectName(u"putOn"_s);
    m_takeOff = new QPushButton(u"Take off reader"_s);
    m_takeOff->setObjectName(u"takeOff"_s);
    auto* blank = new QPushButton(u"New blank card"_s);
    blank->setObjectName(u"newCard"_s);

    auto* grid = new QGridLayout(this);
    grid->addWidget(m_reader, 0, 0, 1, 3);
    grid->addWidget(m_cards, 1, 0, 1, 3);
    grid->addWidget(m_put, 2, 0);
    grid->addWidget(m_takeOff, 2, 1);
    grid->addWidget(blank, 2, 2);

    connect(m_put, &QPushButton::clicked, this, [this] {
        if (const QListWidgetItem* item = m_cards->currentItem())
            run([&] { m_folder.put(item->data(Qt::UserRole).toString()); });
    });
    connect(m_cards, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
        run([&] { m_folder.put(item->data(Qt::UserRole).toString()); });
    });
    connect(m_takeOff, &QPushButton::clicked, this, [this] { run([&] { m_folder.takeOff(); }); });
    connect(blank, &QPushButton::clicked, this, [this] { run([&] { m_folder.addBlank(); }); });

    m_timer = new QTimer(this);
    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &CardTray::refresh);
    m_timer->start();
    refresh();
}

void CardTray::run(const std::function<void()>& action) {
    try {
        action();
    } catch (const pondar::Error& e) {
        QMessageBox::critical(this, u"Card tray"_s, e.message());
    }
    refresh();
}

void CardTray::refresh() {
    pondar::card::SimFolder::Card card;
    const bool present = m_folder.onReader(card);
    m_reader->setText(present ? u"On the reader: "_s + describe(card)
                              : u"On the reader: nothing"_s);
    m_takeOff->setEnabled(present);

    // Rebuilt only when the tray changed, so a selection or a scroll survives the polling.
    const QList<pondar::card::SimFolder::Card> cards = m_folder.tray();
    QStringList shown;
    for (const auto& c : cards)
        shown.append(QString(c.file + u'\t' + describe(c)));
    if (shown != m_shown) {
        m_shown = shown;
        const QString selected = m_cards->currentItem()
                                     ? m_cards->currentItem()->data(Qt::UserRole).toString()
                                     : QString();
        m_cards->clear();
        for (const auto& c : cards) {
            auto* item = new QListWidgetItem(describe(c), m_cards);
            item->setData(Qt::UserRole, c.file);
            if (c.file == selected)
                m_cards->setCurrentItem(item);
        }
    }
    if (!m_cards->currentItem() && m_cards->count() > 0)
        m_cards->setCurrentRow(0);
    m_put->setEnabled(m_cards->count() > 0);
}
