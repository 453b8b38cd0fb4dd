-- The component's own tables and the indexes its statements need (SQLite).
-- The component runs these itself when a table is missing; a DBA may run them by hand.
-- Card and staff codes compare without regard to case (COLLATE NOCASE, which their indexes
-- inherit), as under SQL Server's default collation.

CREATE TABLE IF NOT EXISTS Customize_Transaction (
    ID            INTEGER PRIMARY KEY AUTOINCREMENT,
    CardNo        VARCHAR(20) COLLATE NOCASE,
    Name          VARCHAR(50),
    TrsDate       DATETIME,
    TrsNo         VARCHAR(30),
    TrsOutlet     VARCHAR(20),
    RefTrsNo      VARCHAR(60),
    BillNo        VARCHAR(30),
    Billtype      VARCHAR(3),
    PValue        DECIMAL(19,4),
    PreviousValue DECIMAL(19,4),
    NewValue      DECIMAL(19,4),
    PendingValue  DECIMAL(19,4),
    TopupValue    DECIMAL(19,4),
    ExtraValue    DECIMAL(19,4),
    Remark        VARCHAR(255)
);
CREATE INDEX IF NOT EXISTS IX_Customize_Transaction_Card ON Customize_Transaction (CardNo, TrsDate);
CREATE INDEX IF NOT EXISTS IX_Customize_Transaction_Ref ON Customize_Transaction (RefTrsNo);
-- A card's latest line, its ledger balance.
CREATE INDEX IF NOT EXISTS IX_Customize_Transaction_CardId ON Customize_Transaction (CardNo, ID);
CREATE INDEX IF NOT EXISTS IX_Customize_Transaction_Date ON Customize_Transaction (TrsDate, Billtype);

CREATE TABLE IF NOT EXISTS Customize_Topup (
    ID           INTEGER PRIMARY KEY AUTOINCREMENT,
    cardNo       VARCHAR(20) COLLATE NOCASE,
    DateInput    DATETIME,
    DateUpdate   DATETIME,
    UpdateStatus INTEGER NOT NULL DEFAULT 0,
    FValue       DECIMAL(19,4),
    TrsNo        VARCHAR(30),
    RefTrsNo     VARCHAR(60),
    BillNo       VARCHAR(30)
);
CREATE INDEX IF NOT EXISTS IX_Customize_Topup_Card ON Customize_Topup (cardNo, UpdateStatus, DateInput);
-- Pending top-ups: by card in date order (pending details, settlement), by date (balances).
CREATE INDEX IF NOT EXISTS IX_Customize_Topup_Status ON Customize_Topup (UpdateStatus, cardNo, DateInput);
CREATE INDEX IF NOT EXISTS IX_Customize_Topup_Pending ON Customize_Topup (UpdateStatus, DateInput);

CREATE TABLE IF NOT EXISTS Customize_StaffComm (
    ID         INTEGER PRIMARY KEY AUTOINCREMENT,
    StaffCode  VARCHAR(10) COLLATE NOCASE,
    TrsDate    DATETIME,
    RefTrsNo   VARCHAR(60),
    CardNo     VARCHAR(20) COLLATE NOCASE,
    Name       VARCHAR(50),
    TopupValue DECIMAL(19,4),
    PValue     DECIMAL(19,4)
);
CREATE INDEX IF NOT EXISTS IX_Customize_StaffComm_Staff ON Customize_StaffComm (StaffCode, TrsDate);
CREATE INDEX IF NOT EXISTS IX_Customize_StaffComm_Date ON Customize_StaffComm (TrsDate);

CREATE TABLE IF NOT EXISTS Customize_Log (
    ID          INTEGER PRIMARY KEY AUTOINCREMENT,
    StaffCode   VARCHAR(10) COLLATE NOCASE,
    BizDate     DATETIME,
    ActualDate  DATETIME,
    Description VARCHAR(300)
);
CREATE INDEX IF NOT EXISTS IX_Customize_Log_BizDate ON Customize_Log (BizDate, ActualDate);

-- Every card written for a member, one row per issue; a card's status is its latest row.
CREATE TABLE IF NOT EXISTS Customize_Card (
    ID         INTEGER PRIMARY KEY AUTOINCREMENT,
    CardNo     VARCHAR(20) COLLATE NOCASE,
    CardSerial VARCHAR(40) COLLATE NOCASE,
    Status     VARCHAR(10) COLLATE NOCASE,
    DateIssue  DATETIME,
    DateBlock  DATETIME,
    StaffCode  VARCHAR(10) COLLATE NOCASE,
    Remark     VARCHAR(255)
);
-- A card at Connect (by serial, latest first); a member's cards by status.
CREATE INDEX IF NOT EXISTS IX_Customize_Card_Serial ON Customize_Card (CardSerial, ID);
CREATE INDEX IF NOT EXISTS IX_Customize_Card_Member ON Customize_Card (CardNo, Status);
