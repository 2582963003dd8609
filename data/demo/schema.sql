-- Demo database of a buy-here-pay-here car dealer: the dealer sells vehicles
-- from its lots, finances most sales itself and collects the payments.
--
-- The demo view files (viewsetup.xml, v_invsetup.xml, eodsetup.xml,
-- reportsetup.xml) build their statements on these tables; every field they
-- name exists here.
--
-- Conventions:
--   * dates are TEXT 'YYYY-MM-DD' (so they compare and sort as text and work
--     with SQLite's date() functions); empty dates are NULL;
--   * money is REAL, rounded to cents;
--   * people (Salesman, Collector, Cashier, NoteBy ...) are the host's user
--     names as listed in users.txt, so that a per-user condition such as
--     ACCTS.Collector='alice' finds that user's accounts;
--   * lots are 'Main', 'North' and 'Eastside'.
--
-- No table repeats another table's column for a different meaning within one
-- data set: the report engine names every report field INV_INFO.<column>,
-- whatever its table, so two columns of a data set must not share a name.

CREATE TABLE CUST_INFO (
  CustID          INTEGER PRIMARY KEY,
  FirstName       TEXT NOT NULL,
  MiddleInit      TEXT,
  LastName        TEXT NOT NULL,
  Phone           TEXT,               -- home phone, '(555) 555-0100'
  CellPhone       TEXT,
  WorkPhone       TEXT,
  Email           TEXT,
  Address         TEXT,
  City            TEXT,
  State           TEXT,               -- two letters
  Zip             TEXT,
  DOB             TEXT,
  SSNLast4        TEXT,
  DLNumber        TEXT,
  DLState         TEXT,
  Employer        TEXT,
  JobTitle        TEXT,
  MonthlyIncome   REAL,
  PaidHow         TEXT,               -- how the customer is paid: 'W','B','S','M'
  MonthsAtJob     INTEGER,
  MonthsAtAddress INTEGER,
  RefName         TEXT,               -- personal reference
  RefPhone        TEXT,
  CustSince       TEXT
);

CREATE TABLE INV_INFO (
  StockNum        TEXT PRIMARY KEY,   -- 'M2301', 'N2417' ... (lot letter + number)
  VIN             TEXT UNIQUE,
  Year            INTEGER,
  Make            TEXT,
  Model           TEXT,
  Trim            TEXT,
  BodyStyle       TEXT,               -- 'Sedan', 'Pickup', '4D SUV' ...
  Color           TEXT,
  Mileage         INTEGER,
  Transmission    TEXT,
  Engine          TEXT,
  Cost            REAL,               -- purchase cost
  ReconCost       REAL,               -- repairs and detailing
  AskingPrice     REAL,
  MinPrice        REAL,
  Status          TEXT NOT NULL DEFAULT 'S'
                  CHECK (Status IN ('S','H','D','R','W')),
                  -- S in stock, H on hold, D sold (delivered),
                  -- R repossessed (back on the lot), W wholesaled
  DateIn          TEXT,
  DateSold        TEXT,
  Lot             TEXT,
  Category        TEXT,               -- 'Car', 'Truck', 'SUV', 'Van'
  PurchasedFrom   TEXT,               -- auction or seller
  TitleStatus     TEXT,               -- 'In Hand', 'Pending', 'Lien'
  KeyTag          TEXT
);

CREATE TABLE DEAL_INFO (
  DealID          INTEGER PRIMARY KEY,
  CustID          INTEGER NOT NULL REFERENCES CUST_INFO(CustID),
  StockNum        TEXT REFERENCES INV_INFO(StockNum),
  DealDate        TEXT NOT NULL,
  SalePrice       REAL,
  TradeAllow      REAL,
  TradePayoff     REAL,
  DownPmt         REAL,
  DeferredDown    REAL,               -- part of the down payment owed later
  SalesTax        REAL,
  DocFee          REAL,
  AmtFinanced     REAL,               -- 0 for cash deals
  Salesman        TEXT,
  DealType        TEXT NOT NULL
                  CHECK (DealType IN ('BHPH','Cash','Outside')),
                  -- BHPH financed in house, Outside financed by a bank
  DealStatus      TEXT NOT NULL DEFAULT 'F'
                  CHECK (DealStatus IN ('P','F','U')),
                  -- P pending, F finalised, U unwound
  Lot             TEXT
);

CREATE TABLE FIN_INFO (
  DealID          INTEGER PRIMARY KEY REFERENCES DEAL_INFO(DealID),
  APR             REAL,               -- percent, e.g. 24.9
  Term            INTEGER,            -- number of payments
  PmtSchedule     TEXT,               -- 'W','B','S','M'
  RegularPmt      REAL,
  FirstPmtDate    TEXT,
  FinalPmtDate    TEXT,
  FinanceCharge   REAL,
  TotalOfPmts     REAL,
  LateFeeAmt      REAL,
  GraceDays       INTEGER
);

CREATE TABLE ACCTS (
  AcctNum         INTEGER PRIMARY KEY,
  CustID          INTEGER NOT NULL REFERENCES CUST_INFO(CustID),
  DealID          INTEGER REFERENCES DEAL_INFO(DealID),
  StockNum        TEXT REFERENCES INV_INFO(StockNum),
  Status          TEXT NOT NULL DEFAULT 'A'
                  CHECK (Status IN ('A','C','R','P','X')),
                  -- A active, C closed (charged off), R repossessed,
                  -- P paid off, X voided (never shown in lists)
  Balance         REAL,               -- principal balance
  PmtAmt          REAL,
  PmtFreq         TEXT CHECK (PmtFreq IN ('W','B','S','M')),
                  -- weekly, bi-weekly, semi-monthly, monthly
  Next_Pmt_Due    TEXT,
  LastPmtDate     TEXT,
  LastPmtAmt      REAL,
  DaysLate        INTEGER NOT NULL DEFAULT 0,
  PastDueAmt      REAL,
  LateFeesDue     REAL,
  PmtsMade        INTEGER,
  PmtsLeft        INTEGER,
  Salesman        TEXT,
  Collector       TEXT,
  Lot             TEXT,
  OpenDate        TEXT,
  CloseDate       TEXT,
  RepoDate        TEXT,
  PayoffAmt       REAL,               -- balance plus accrued interest and fees
  GPSUnit         TEXT,               -- 'Y' when a GPS/starter-interrupt is fitted
  InsuranceExp    TEXT
);

CREATE TABLE ACCT_HISTORY (
  HistID          INTEGER PRIMARY KEY,
  AcctNum         INTEGER NOT NULL REFERENCES ACCTS(AcctNum),
  TransDate       TEXT NOT NULL,
  TransType       TEXT NOT NULL,
                  -- PMT payment, LF late fee only, DDP deferred down payment,
                  -- PO payoff, NSF returned check, ADJ adjustment
  PayMethod       TEXT,               -- 'Cash', 'Check', 'Card', 'Money Order', 'ACH'
  Amount          REAL,
  Principal       REAL,
  Interest        REAL,
  LateFee         REAL,
  BalanceAfter    REAL,
  ReceiptNum      TEXT,
  Cashier         TEXT,
  Voided          INTEGER NOT NULL DEFAULT 0
);

CREATE TABLE PTP (
  PtpID           INTEGER PRIMARY KEY,
  AcctNum         INTEGER NOT NULL REFERENCES ACCTS(AcctNum),
  DateMade        TEXT,
  PromiseDate     TEXT NOT NULL,
  Amount          REAL,
  Kept            TEXT NOT NULL DEFAULT 'P'
                  CHECK (Kept IN ('Y','N','P')),
                  -- Y kept, N broken, P pending (date not reached)
  Collector       TEXT
);

CREATE TABLE NOTES (
  NoteID          INTEGER PRIMARY KEY,
  AcctNum         INTEGER NOT NULL REFERENCES ACCTS(AcctNum),
  NoteDate        TEXT NOT NULL,
  NoteBy          TEXT,
  NoteType        TEXT,               -- 'COL' collections, 'GEN' general,
                                      -- 'REPO', 'SKIP' skip tracing
  NoteText        TEXT
);

CREATE INDEX ACCTS_Status      ON ACCTS(Status);
CREATE INDEX ACCTS_Collector   ON ACCTS(Collector);
CREATE INDEX ACCTS_NextDue     ON ACCTS(Next_Pmt_Due);
CREATE INDEX ACCTS_CustID      ON ACCTS(CustID);
CREATE INDEX HISTORY_Acct      ON ACCT_HISTORY(AcctNum, TransDate);
CREATE INDEX HISTORY_Date      ON ACCT_HISTORY(TransDate);
CREATE INDEX PTP_Acct          ON PTP(AcctNum);
CREATE INDEX PTP_Date          ON PTP(PromiseDate);
CREATE INDEX NOTES_Acct        ON NOTES(AcctNum, NoteDate);
CREATE INDEX DEAL_Date         ON DEAL_INFO(DealDate);
CREATE INDEX INV_Status        ON INV_INFO(Status);
