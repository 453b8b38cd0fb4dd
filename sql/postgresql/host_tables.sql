-- The host's member and staff tables as the component uses them (PostgreSQL). They belong to
-- the host and exist before the component runs; the demo host and the tests create them from
-- this file. Codes are citext: they compare without regard to case, as under SQL Server's
-- default collation, and their indexes do too.

CREATE EXTENSION IF NOT EXISTS citext;

CREATE TABLE tloy_mt_member (
    MemberCode     CITEXT NOT NULL PRIMARY KEY CHECK (length(MemberCode) <= 10),
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
    downlinecode   CITEXT CHECK (length(downlinecode) <= 10),
    NonActive      INTEGER NOT NULL DEFAULT 0,
    pendingbalance NUMERIC(19,4) DEFAULT 0
);

CREATE TABLE tpay_mt_staff (
    StaffCode CITEXT NOT NULL PRIMARY KEY CHECK (length(StaffCode) <= 10),
    StaffName VARCHAR(50),
    NonActive INTEGER NOT NULL DEFAULT 0
);
