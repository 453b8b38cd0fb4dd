-- The host's member and staff tables as the component uses them (SQLite). They belong to the
-- host; the demo host and the tests create them from this file. Codes compare without regard to
-- case (COLLATE NOCASE), as under SQL Server's default collation; their indexes do too.

CREATE TABLE IF NOT EXISTS tloy_mt_member (
    MemberCode     VARCHAR(10) COLLATE NOCASE NOT NULL PRIMARY KEY,
    MemberName     VARCHAR(50),
    ResidentAdd1   VARCHAR(50),
    ResidentAdd2   VARCHAR(50),
    ResidentAdd3   VARCHAR(50),
    ResidentAdd4   VARCHAR(50),
    IcNew          VARCHAR(16),
    hpno           VARCHAR(20),
    telno          VARCHAR(20),
    sex            VARCHAR(1),
    MaritalStatus  VARCHAR(1),
    EmailAdd       VARCHAR(50),
    downlinecode   VARCHAR(10) COLLATE NOCASE,
    NonActive      INTEGER NOT NULL DEFAULT 0,
    pendingbalance DECIMAL(19,4) DEFAULT 0
);

CREATE TABLE IF NOT EXISTS tpay_mt_staff (
    StaffCode VARCHAR(10) COLLATE NOCASE NOT NULL PRIMARY KEY,
    StaffName VARCHAR(50),
    NonActive INTEGER NOT NULL DEFAULT 0
);
