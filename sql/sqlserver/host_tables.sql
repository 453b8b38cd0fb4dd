-- The host's member and staff tables as the component uses them (SQL Server). They belong to
-- the host and exist before the component runs; this file documents them.

CREATE TABLE tloy_mt_member (
    MemberCode     VARCHAR(10) NOT NULL PRIMARY KEY,
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
    downlinecode   VARCHAR(10),
    NonActive      INT NOT NULL DEFAULT 0,
    pendingbalance MONEY DEFAULT 0
);

CREATE TABLE tpay_mt_staff (
    StaffCode VARCHAR(10) NOT NULL PRIMARY KEY,
    StaffName VARCHAR(50),
    NonActive INT NOT NULL DEFAULT 0
);
