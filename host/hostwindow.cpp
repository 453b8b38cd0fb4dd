#include "hostwindow.h"

#include "cardtray.h"

#include <QCoreApplication>
#include <QDate>
#include <QFile>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

HostWindow::HostWindow(DemoData data, QSqlDatabase db, const QString& simDir, QWidget* parent)
    : QWidget(parent)
    , m_data(std::move(data))
    , m_db(std::move(db))
    , m_simDir(simDir) {
    setObjectName(u"HostWindow"_s);
    setWindowTitle(u"Pondar demo host"_s);

    auto* particulars = new QGroupBox(u"StartApp particulars"_s);
    auto* form = new QFormLayout(particulars);
    form->addRow(u"Staff code"_s, m_staff = field(u"CStaffCode"_s, u"S001"_s));
    form->addRow(u"Business date"_s,
                 m_bzDate = field(u"cBzDate"_s, QDate::currentDate().toString(u"dd/MM/yyyy"_s)));
    form->addRow(u"Printer file"_s, m_printer = field(u"cPrinter"_s, m_data.printer));
    form->addRow(u"Outlet"_s, m_outlet = field(u"OutletCode"_s, u"KL01"_s));
    form->addRow(u"Transaction no."_s, m_trsNo = field(u"CTrsNo"_s, u"T000101"_s));
    form->addRow(u"Bill no."_s, m_billNo = field(u"CBillNo"_s, u"B000101"_s));
    form->addRow(u"Amount"_s, m_amount = field(u"CAppValue"_s, u"100.00"_s));
    form->addRow(u"Settings file"_s, new QLabel(m_data.settings));

    auto* modes = new QGroupBox(u"Start"_s);
    auto* grid = new QGridLayout(modes);
    const QStringList names = {u"MAINMENU"_s,   u"MEMBER"_s,  u"TOPUP"_s, u"WITHDRAW"_s,
                               u"ADJUSTMENT"_s, u"ENQUIRY"_s, u"LOG"_s,   u"EOD"_s};
    for (int i = 0; i < names.size(); ++i) {
        auto* button = new QPushButton(names[i]);
        button->setObjectName(u"start-"_s + names[i]);
        connect(button, &QPushButton::clicked, this, [this, mode = names[i]] { start(mode); });
        grid->addWidget(button, i / 4, i % 4);
    }
    auto* enquiryButton = new QPushButton(u"ShowEnquiry"_s);
    enquiryButton->setObjectName(u"ShowEnquiry"_s);
    connect(enquiryButton, &QPushButton::clicked, this, &HostWindow::enquiry);
    grid->addWidget(enquiryButton, 2, 0, 1, 4);

    m_result = new QLabel(u"No call yet."_s);
    m_result->setObjectName(u"result"_s);
    m_transaction = new QPlainTextEdit;
    m_transaction->setObjectName(u"transactionSection"_s);
    m_transaction->setReadOnly(true);
    m_transaction->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(particulars);
    layout->addWidget(modes);
    if (m_simDir.isEmpty()) {
        layout->addWidget(new QLabel(u"Reader: PONDAR_READER="_s +
                                     qEnvironmentVariable("PONDAR_READER") +
                                     u" (no simulated cards)"_s));
    } else {
        layout->addWidget(new CardTray(m_simDir));
        // The component's screens are modal and block this window; a tray in a process of its
        // own stays usable while the balance display or a transaction screen is open.
        auto* trayWindow = new QPushButton(u"Card tray in its own window"_s);
        trayWindow->setObjectName(u"trayWindow"_s);
        connect(trayWindow, &QPushButton::clicked, this, &HostWindow::openTrayWindow);
        layout->addWidget(trayWindow);
    }
    layout->addWidget(m_result);
    layout->addWidget(new QLabel(u"[TRANSACTION] of the settings file after the call:"_s));
    layout->addWidget(m_transaction);
}

QLineEdit* HostWindow::field(const QString& name, const QString& value) {
    auto* edit = new QLineEdit(value);
    edit->setObjectName(name);
    return edit;
}

void HostWindow::start(const QString& mode) {
    try {
        const bool result = m_app.StartApp(m_staff->text(), m_db.databaseName(), m_bzDate->text(),
                                           m_printer->text(), m_outlet->text(), m_data.settings,
                                           m_db, mode, m_trsNo->text(), m_billNo->text(),
                                           pondar::Currency::parse(m_amount->text()));
        showOutcome(u"StartApp(\""_s + mode + u"\")"_s, result);
    } catch (const pondar::Error& e) {
        m_result->setText(u"StartApp(\""_s + mode + u"\") failed: "_s + e.message());
        QMessageBox::critical(this, u"Pondar"_s, e.message());
    }
}

void HostWindow::enquiry() {
    try {
        showOutcome(u"ShowEnquiry()"_s, m_app.ShowEnquiry());
    } catch (const pondar::Error& e) {
        QMessageBox::critical(this, u"Pondar"_s, e.message());
    }
}

void HostWindow::showOutcome(const QString& call, bool result) {
    m_result->setText(call + u" returned "_s + (result ? u"true"_s : u"false"_s));
    QFile file(m_data.settings);
    QString section;
    if (file.open(QIODevice::ReadOnly)) {
        bool inside = false;
        for (const QByteArray& raw : file.readAll().split('\n')) {
            const QString line = QString::fromLatin1(raw).trimmed();
            if (line.startsWith(u'['))
                inside = line.compare(u"[TRANSACTION]"_s, Qt::CaseInsensitive) == 0;
            else if (inside && !line.isEmpty())
                section += line + u'\n';
        }
    }
    m_transaction->setPlainText(section);
}

HostWindow::~HostWindow() {
    if (m_trayWindow && m_trayWindow->state() != QProcess::NotRunning) {
        m_trayWindow->terminate();
        if (!m_trayWindow->waitForFinished(2000))
            m_trayWindow->kill();
        m_trayWindow->waitForFinished(1000);
    }
}

void HostWindow::openTrayWindow() {
    // One tray window, a child of this process: it must not outlive the host it serves.
    if (!m_trayWindow)
        m_trayWindow = new QProcess(this);
    if (m_trayWindow->state() != QProcess::NotRunning)
        return;
    m_trayWindow->start(QCoreApplication::applicationFilePath(), {u"--tray"_s, m_simDir});
    if (!m_trayWindow->waitForStarted(5000))
        QMessageBox::critical(this, u"Card tray"_s, u"Cannot start a tray window."_s);
}
