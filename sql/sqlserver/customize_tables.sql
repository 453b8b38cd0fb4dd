-- The component's own tables and the indexes its statements need (SQL Server).
-- The component creates a missing table itself, after testing that it does not exist; where it
-- may not create tables, the DBA runs this file once.

CREATE TABLE Customize_Transaction (
    ID            INT IDENTITY(1,1) PRIMARY KEY,
    CardNo        VARCHAR(20),
    Name          VARCHAR(50),
    TrsDate       DATETIME,
    TrsNo         VARCHAR(30),
    TrsOutlet     VARCHAR(20),
    RefTrsNo      VARCHAR(60),
    BillNo        VARCHAR(30),
    Billtype      VARCHAR(3),
    PValue        MONEY,
    PreviousValue MONEY,
    NewValue      MONEY,
    PendingValue  MONEY,
    TopupValue    MONEY,
    ExtraValue    MONEY,
    Remark        VARCHAR(255)
);
CREATE INDEX IX_Customize_Transaction_Card ON Customize_Transaction (CardNo, TrsDate);
CREATE INDEX IX_Customize_Transaction_Ref ON Customize_Transaction (RefTrsNo);
-- A card's latest line, its ledger balance.
CREATE INDEX IX_Customize_Transaction_CardId ON Customize_Transaction (CardNo, ID);
CREATE INDEX IX_Customize_Transaction_Date ON Customize_Transaction (TrsDate, Billtype);

CREATE TABLE Customize_Topup (
    ID           INT IDENTITY(1,1) PRIMARY KEY,
    cardNo       VARCHAR(20),
    DateInput    DATETIME,
    DateUpdate   DATETIME,
    UpdateStatus INT NOT NULL DEFAULT 0,
    FValue       MONEY,
    TrsNo        VARCHAR(30),
    RefTrsNo     VARCHAR(60),
    BillNo       VARCHAR(30)
);
CREATE INDEX IX_Customize_Topup_Card ON Customize_Topup (cardNo, UpdateStatus, DateInput);
-- Pending top-ups: by card in date order (pending details, settlement), by date (balances).
CREATE INDEX IX_Customize_Topup_Status ON Customize_Topup (UpdateStatus, cardNo, DateInput);
CREATE INDEX IX_Customize_Topup_Pending ON Customize_Topup (UpdateStatus, DateInput);

CREATE TABLE Customize_StaffComm (
    ID         INT IDENTITY(1,1) PRIMARY KEY,
    StaffCode  VARCHAR(10),
    TrsDate    DATETIME,
    RefTrsNo   VARCHAR(60),
    CardNo     VARCHAR(20),
    Name       VARCHAR(50),
    TopupValue MONEY,
    PValue     MONEY
);
CREATE INDEX IX_Customize_StaffComm_Staff ON Customize_StaffComm (StaffCode, TrsDate);
CREATE INDEX IX_Customize_StaffComm_Date ON Customize_StaffComm (TrsDate);

CREATE TABLE Customize_Log (
    ID          INT IDENTITY(1,1) PRIMARY KEY,
    StaffCode   VARCHAR(10),
    BizDate     DATETIME,
    ActualDate  DATETIME,
    Description VARCHAR(300)
);
CREATE INDEX IX_Customize_Log_BizDate ON Customize_Log (BizDate, ActualDate);

-- Every card written for a member, one row per issue; a card's status is its latest row.
CREATE TABLE Customize_Card (
    ID         INT IDENTITY(1,1) PRIMARY KEY,
    CardNo     VARCHAR(20),
    CardSerial VARCHAR(40),
    Status     VARCHAR(10),
    DateIssue  DATETIME,
    DateBlock  DATETIME,
    StaffCode  VARCHAR(10),
    Remark     VARCHAR(255)
);
-- A card at Connect (by serial, latest first); a member's cards by status.
CREATE INDEX IX_Customize_Card_Serial ON Customize_Card (CardSerial, ID);
CREATE INDEX IX_Customize_Card_Member ON Customize_Card (CardNo, Status);
