#include "reportengine/demo_database.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>

#include "base/error.h"
#include "base/text.h"
#include "host/host_services.h"
#include "reportengine/language/report_expression.h"

namespace cvve::reportengine {

namespace fs = std::filesystem;

namespace {

// splitmix64: small, fast and the same on every platform, so a seed always
// gives the same database.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // [low, high]
  int Int(int low, int high) {
    return low + static_cast<int>(Next() % static_cast<std::uint64_t>(high - low + 1));
  }
  double Real(double low, double high) {
    return low + (high - low) * (static_cast<double>(Next() >> 11) / 9007199254740992.0);
  }
  bool Chance(double p) { return Real(0, 1) < p; }
  template <class T, std::size_t N>
  const T& Pick(const std::array<T, N>& items) {
    return items[Next() % N];
  }
  template <class T>
  const T& Pick(const std::vector<T>& items) {
    return items[Next() % items.size()];
  }

 private:
  std::uint64_t state_;
};

using Day = std::chrono::sys_days;

Day ParseDay(std::string_view iso) {
  const int y = std::stoi(std::string(iso.substr(0, 4)));
  const int m = std::stoi(std::string(iso.substr(5, 2)));
  const int d = std::stoi(std::string(iso.substr(8, 2)));
  return Day{std::chrono::year{y} / m / d};
}

std::string Iso(Day day) {
  const std::chrono::year_month_day ymd{day};
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
  return buffer;
}

Day Plus(Day day, int days) { return day + std::chrono::days{days}; }
int DaysBetween(Day from, Day to) { return static_cast<int>((to - from).count()); }

double Cents(double value) { return std::round(value * 100.0) / 100.0; }

std::string Format(const char* pattern, auto... args) {
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, pattern, args...);
  return buffer;
}

// A prepared insert; binds by position and resets after each step.
class Insert {
 public:
  Insert(sqlite3* db, const std::string& sql) : db_(db) {
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) {
      throw Error("demo database: " + std::string(sqlite3_errmsg(db)) + " in: " + sql);
    }
  }
  ~Insert() { sqlite3_finalize(stmt_); }
  Insert(const Insert&) = delete;
  Insert& operator=(const Insert&) = delete;

  Insert& operator<<(std::int64_t value) {
    sqlite3_bind_int64(stmt_, ++index_, value);
    return *this;
  }
  Insert& operator<<(int value) { return *this << static_cast<std::int64_t>(value); }
  Insert& operator<<(double value) {
    sqlite3_bind_double(stmt_, ++index_, value);
    return *this;
  }
  Insert& operator<<(std::string_view value) {
    sqlite3_bind_text(stmt_, ++index_, value.data(), static_cast<int>(value.size()),
                      SQLITE_TRANSIENT);
    return *this;
  }
  Insert& operator<<(const std::string& value) { return *this << std::string_view(value); }
  Insert& operator<<(const char* value) { return *this << std::string_view(value); }
  Insert& operator<<(std::nullptr_t) {
    sqlite3_bind_null(stmt_, ++index_);
    return *this;
  }
  void Run() {
    if (sqlite3_step(stmt_) != SQLITE_DONE) {
      throw Error("demo database: " + std::string(sqlite3_errmsg(db_)));
    }
    sqlite3_reset(stmt_);
    index_ = 0;
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
  int index_ = 0;
};

void Exec(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    const std::string text = message ? message : "unknown error";
    sqlite3_free(message);
    throw Error("demo database: " + text);
  }
}

// The schema's statements, tables first; indexes are built after the data
// is in, which is several times faster than keeping them up to date.
void SplitSchema(sqlite3* db, const std::string& schema, std::vector<std::string>& tables,
                 std::vector<std::string>& indexes) {
  const char* rest = schema.c_str();
  while (*rest != '\0') {
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db, rest, -1, &stmt, &tail) != SQLITE_OK) {
      throw Error("the schema has an error: " + std::string(sqlite3_errmsg(db)));
    }
    if (stmt != nullptr) {
      const std::string sql = sqlite3_sql(stmt);
      sqlite3_finalize(stmt);
      std::string head = ToUpper(sql.substr(sql.find_first_not_of(" \t\r\n")));
      const bool index =
          StartsWith(head, "CREATE INDEX") || StartsWith(head, "CREATE UNIQUE INDEX");
      (index ? indexes : tables).push_back(sql);
      // Tables must exist before the next statement is prepared against them.
      if (!index) Exec(db, sql);
    }
    rest = tail;
  }
}

constexpr std::array<const char*, 72> kFirstNames = {
    "James",     "Mary",     "Robert",    "Patricia", "John",        "Jennifer", "Michael",
    "Linda",     "David",    "Elizabeth", "William",  "Barbara",     "Richard",  "Susan",
    "Joseph",    "Jessica",  "Thomas",    "Sarah",    "Christopher", "Karen",    "Charles",
    "Lisa",      "Daniel",   "Nancy",     "Matthew",  "Betty",       "Anthony",  "Sandra",
    "Mark",      "Margaret", "Donald",    "Ashley",   "Steven",      "Kimberly", "Andrew",
    "Emily",     "Paul",     "Donna",     "Joshua",   "Michelle",    "Kenneth",  "Carol",
    "Kevin",     "Amanda",   "Brian",     "Melissa",  "Timothy",     "Deborah",  "Ronald",
    "Stephanie", "Jason",    "Rebecca",   "George",   "Sharon",      "Edward",   "Laura",
    "Jeffrey",   "Cynthia",  "Ryan",      "Dorothy",  "Jacob",       "Amy",      "Nicholas",
    "Kathleen",  "Gary",     "Angela",    "Eric",     "Shirley",     "Jonathan", "Brenda",
    "Marcus",    "Tasha"};
constexpr std::array<const char*, 80> kLastNames = {
    "Smith",    "Johnson",   "Williams", "Brown",     "Jones",    "Garcia",   "Miller",
    "Davis",    "Rodriguez", "Martinez", "Hernandez", "Lopez",    "Gonzalez", "Wilson",
    "Anderson", "Thomas",    "Taylor",   "Moore",     "Jackson",  "Martin",   "Lee",
    "Perez",    "Thompson",  "White",    "Harris",    "Sanchez",  "Clark",    "Ramirez",
    "Lewis",    "Robinson",  "Walker",   "Young",     "Allen",    "King",     "Wright",
    "Scott",    "Torres",    "Nguyen",   "Hill",      "Flores",   "Green",    "Adams",
    "Nelson",   "Baker",     "Hall",     "Rivera",    "Campbell", "Mitchell", "Carter",
    "Roberts",  "Gomez",     "Phillips", "Evans",     "Turner",   "Diaz",     "Parker",
    "Cruz",     "Edwards",   "Collins",  "Reyes",     "Stewart",  "Morris",   "Morales",
    "Murphy",   "Cook",      "Rogers",   "Gutierrez", "Ortiz",    "Morgan",   "Cooper",
    "Peterson", "Bailey",    "Reed",     "Kelly",     "Howard",   "Ramos",    "Kim",
    "Cox",      "Ward",      "O'Brien"};
struct City {
  const char* name;
  const char* zip;
  const char* area;
};
constexpr std::array<City, 16> kCities = {{{"Columbus", "432", "614"},
                                           {"Dublin", "430", "614"},
                                           {"Westerville", "430", "614"},
                                           {"Grove City", "431", "614"},
                                           {"Hilliard", "430", "614"},
                                           {"Reynoldsburg", "430", "614"},
                                           {"Gahanna", "432", "614"},
                                           {"Delaware", "430", "740"},
                                           {"Newark", "430", "740"},
                                           {"Lancaster", "431", "740"},
                                           {"Marysville", "430", "937"},
                                           {"Pickerington", "431", "614"},
                                           {"Whitehall", "432", "614"},
                                           {"Canal Winchester", "431", "614"},
                                           {"Circleville", "431", "740"},
                                           {"London", "431", "740"}}};
constexpr std::array<const char*, 24> kStreets = {
    "Main St",     "Oak St",        "Maple Ave",      "Cedar Ln",    "Elm St",      "High St",
    "Broad St",    "Park Ave",      "Walnut St",      "Cherry Ln",   "Sunbury Rd",  "Cleveland Ave",
    "Morse Rd",    "Karl Rd",       "Livingston Ave", "Hamilton Rd", "Parsons Ave", "Refugee Rd",
    "Lincoln Ave", "Washington St", "Church St",      "Mill St",     "Lake Dr",     "Ridge Rd"};
constexpr std::array<const char*, 20> kEmployers = {"Kroger",
                                                    "Walmart",
                                                    "Amazon Fulfillment",
                                                    "OhioHealth",
                                                    "Honda of America",
                                                    "City of Columbus",
                                                    "Home Depot",
                                                    "Lowe's",
                                                    "FedEx Ground",
                                                    "Bob Evans",
                                                    "Wendy's",
                                                    "Nationwide",
                                                    "Target",
                                                    "UPS",
                                                    "Mount Carmel",
                                                    "Self-employed",
                                                    "Giant Eagle",
                                                    "Marathon",
                                                    "Speedway",
                                                    "Meijer"};
constexpr std::array<const char*, 14> kJobs = {
    "Warehouse Associate", "Cashier",      "Nurse Aide", "Driver",
    "Line Cook",           "Assembler",    "Stocker",    "Custodian",
    "Machine Operator",    "Office Clerk", "Server",     "Forklift Operator",
    "Home Health Aide",    "Technician"};

struct Model {
  const char* make;
  const char* model;
  const char* body;
  const char* category;
  const char* wmi;
  const char* engine;
};
constexpr std::array<Model, 36> kModels = {
    {{"Toyota", "Camry", "Sedan", "Car", "4T1", "2.5L I4"},
     {"Toyota", "Corolla", "Sedan", "Car", "2T1", "1.8L I4"},
     {"Toyota", "RAV4", "4D SUV", "SUV", "2T3", "2.5L I4"},
     {"Toyota", "Tacoma", "Pickup", "Truck", "3TM", "3.5L V6"},
     {"Honda", "Civic", "Sedan", "Car", "19X", "2.0L I4"},
     {"Honda", "Accord", "Sedan", "Car", "1HG", "1.5L I4 Turbo"},
     {"Honda", "CR-V", "4D SUV", "SUV", "5J6", "1.5L I4 Turbo"},
     {"Honda", "Odyssey", "Minivan", "Van", "5FN", "3.5L V6"},
     {"Ford", "F-150", "Pickup", "Truck", "1FT", "5.0L V8"},
     {"Ford", "Escape", "4D SUV", "SUV", "1FM", "1.5L I3 Turbo"},
     {"Ford", "Fusion", "Sedan", "Car", "3FA", "2.5L I4"},
     {"Ford", "Explorer", "4D SUV", "SUV", "1FM", "3.5L V6"},
     {"Ford", "Focus", "Hatchback", "Car", "1FA", "2.0L I4"},
     {"Chevrolet", "Malibu", "Sedan", "Car", "1G1", "1.5L I4 Turbo"},
     {"Chevrolet", "Silverado 1500", "Pickup", "Truck", "1GC", "5.3L V8"},
     {"Chevrolet", "Equinox", "4D SUV", "SUV", "2GN", "1.5L I4 Turbo"},
     {"Chevrolet", "Impala", "Sedan", "Car", "2G1", "3.6L V6"},
     {"Chevrolet", "Traverse", "4D SUV", "SUV", "1GN", "3.6L V6"},
     {"Nissan", "Altima", "Sedan", "Car", "1N4", "2.5L I4"},
     {"Nissan", "Sentra", "Sedan", "Car", "3N1", "1.8L I4"},
     {"Nissan", "Rogue", "4D SUV", "SUV", "5N1", "2.5L I4"},
     {"Hyundai", "Elantra", "Sedan", "Car", "5NP", "2.0L I4"},
     {"Hyundai", "Sonata", "Sedan", "Car", "5NP", "2.4L I4"},
     {"Hyundai", "Tucson", "4D SUV", "SUV", "KM8", "2.0L I4"},
     {"Kia", "Optima", "Sedan", "Car", "5XX", "2.4L I4"},
     {"Kia", "Soul", "Hatchback", "Car", "KND", "2.0L I4"},
     {"Kia", "Sorento", "4D SUV", "SUV", "5XY", "3.3L V6"},
     {"Dodge", "Charger", "Sedan", "Car", "2C3", "3.6L V6"},
     {"Dodge", "Grand Caravan", "Minivan", "Van", "2C4", "3.6L V6"},
     {"Jeep", "Grand Cherokee", "4D SUV", "SUV", "1C4", "3.6L V6"},
     {"Jeep", "Wrangler", "2D SUV", "SUV", "1C4", "3.6L V6"},
     {"Chrysler", "Town & Country", "Minivan", "Van", "2C4", "3.6L V6"},
     {"GMC", "Sierra 1500", "Pickup", "Truck", "3GT", "5.3L V8"},
     {"Mazda", "Mazda3", "Sedan", "Car", "3MZ", "2.5L I4"},
     {"Volkswagen", "Jetta", "Sedan", "Car", "3VW", "1.4L I4 Turbo"},
     {"Subaru", "Outback", "Wagon", "Car", "4S4", "2.5L H4"}}};
constexpr std::array<const char*, 5> kTrims = {"Base", "S", "SE", "LE", "XLT"};
constexpr std::array<const char*, 10> kColors = {"White", "Black",  "Silver", "Gray", "Red",
                                                 "Blue",  "Maroon", "Green",  "Tan",  "Gold"};
constexpr std::array<const char*, 5> kSources = {"Manheim Ohio", "ADESA Columbus", "Trade-in",
                                                 "Private seller", "Dealer trade"};
struct LotInfo {
  const char* name;
  char letter;
};
constexpr std::array<LotInfo, 3> kLots = {{{"Main", 'M'}, {"North", 'N'}, {"Eastside", 'E'}}};
constexpr std::array<const char*, 5> kPayMethods = {"Cash", "Check", "Card", "Money Order", "ACH"};

struct Schedule {
  const char* code;
  int days;      // days between payments
  int per_year;  // payments a year
  int min_term, max_term;
};
constexpr std::array<Schedule, 4> kSchedules = {
    {{"W", 7, 52, 104, 156}, {"B", 14, 26, 52, 78}, {"S", 15, 24, 48, 72}, {"M", 30, 12, 24, 42}}};

const Schedule& PickSchedule(Random& random) {
  const int roll = random.Int(1, 100);
  if (roll <= 40) return kSchedules[0];
  if (roll <= 70) return kSchedules[1];
  if (roll <= 80) return kSchedules[2];
  return kSchedules[3];
}

// Balance after k payments of an amortised loan.
double BalanceAfter(double principal, double rate, double payment, int k) {
  if (rate <= 0) return std::max(0.0, principal - payment * k);
  const double growth = std::pow(1 + rate, k);
  return std::max(0.0, principal * growth - payment * (growth - 1) / rate);
}

std::string Vin(Random& random, const char* wmi, int year, std::int64_t serial) {
  static constexpr std::string_view kChars = "ABCDEFGHJKLMNPRSTUVWXYZ0123456789";
  static constexpr std::string_view kYears = "ABCDEFGHJKLMNPRSTVWXY123456789";
  std::string vin = wmi;
  for (int i = 0; i < 5; ++i) vin += kChars[random.Next() % kChars.size()];
  vin += kChars[random.Next() % 10 + 23];  // check digit position: a digit
  vin += kYears[(year - 1980) % kYears.size()];
  vin += kChars[random.Next() % 23];  // plant
  vin += Format("%06lld", static_cast<long long>(serial % 1000000));
  return vin;
}

class Generator {
 public:
  Generator(sqlite3* db, const DemoDatabaseOptions& options, std::vector<std::string> users)
      : db_(db),
        options_(options),
        users_(std::move(users)),
        random_(options.seed * 0x2545F4914F6CDD1DULL + 7),
        today_(ParseDay(options.today.empty() ? kDemoToday : options.today)),
        customer_(db,
                  "INSERT INTO CUST_INFO (CustID, FirstName, MiddleInit, LastName, Phone, "
                  "CellPhone, WorkPhone, Email, Address, City, State, Zip, DOB, SSNLast4, "
                  "DLNumber, DLState, Employer, JobTitle, MonthlyIncome, PaidHow, "
                  "MonthsAtJob, MonthsAtAddress, RefName, RefPhone, CustSince) VALUES "
                  "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
        vehicle_(db,
                 "INSERT INTO INV_INFO (StockNum, VIN, Year, Make, Model, Trim, BodyStyle, "
                 "Color, Mileage, Transmission, Engine, Cost, ReconCost, AskingPrice, "
                 "MinPrice, Status, DateIn, DateSold, Lot, Category, PurchasedFrom, "
                 "TitleStatus, KeyTag) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
        deal_(db,
              "INSERT INTO DEAL_INFO (DealID, CustID, StockNum, DealDate, SalePrice, "
              "TradeAllow, TradePayoff, DownPmt, DeferredDown, SalesTax, DocFee, AmtFinanced, "
              "Salesman, DealType, DealStatus, Lot) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
        finance_(db,
                 "INSERT INTO FIN_INFO (DealID, APR, Term, PmtSchedule, RegularPmt, "
                 "FirstPmtDate, FinalPmtDate, FinanceCharge, TotalOfPmts, LateFeeAmt, "
                 "GraceDays) VALUES (?,?,?,?,?,?,?,?,?,?,?)"),
        account_(db,
                 "INSERT INTO ACCTS (AcctNum, CustID, DealID, StockNum, Status, Balance, "
                 "PmtAmt, PmtFreq, Next_Pmt_Due, LastPmtDate, LastPmtAmt, DaysLate, "
                 "PastDueAmt, LateFeesDue, PmtsMade, PmtsLeft, Salesman, Collector, Lot, "
                 "OpenDate, CloseDate, RepoDate, PayoffAmt, GPSUnit, InsuranceExp) VALUES "
                 "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
        history_(db,
                 "INSERT INTO ACCT_HISTORY (HistID, AcctNum, TransDate, TransType, "
                 "PayMethod, Amount, Principal, Interest, LateFee, BalanceAfter, ReceiptNum, "
                 "Cashier, Voided) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)"),
        promise_(db,
                 "INSERT INTO PTP (PtpID, AcctNum, DateMade, PromiseDate, Amount, Kept, "
                 "Collector) VALUES (?,?,?,?,?,?,?)"),
        note_(db,
              "INSERT INTO NOTES (NoteID, AcctNum, NoteDate, NoteBy, NoteType, NoteText) "
              "VALUES (?,?,?,?,?,?)") {}

  DemoDatabaseCounts Run() {
    const int n = options_.accounts;
    for (int i = 1; i <= n; ++i) FinancedSale(i);
    // Cash and bank-financed sales: deals without an account.
    for (int i = 1; i <= n / 4; ++i) OtherSale(n + i);
    // Vehicles on the lots.
    for (int i = 1; i <= std::max(1, n / 8); ++i) {
      const int number = n + n / 4 + i;
      const Day in = Plus(today_, -random_.Int(1, 150));
      Vehicle(number, random_.Chance(0.85) ? "S" : "H", in, nullptr, kLots[number % 3]);
    }
    return counts_;
  }

 private:
  const std::string& User() { return random_.Pick(users_); }

  void Customer(int id, Day since) {
    const City& city = random_.Pick(kCities);
    const std::string first = random_.Pick(kFirstNames);
    const std::string last = random_.Pick(kLastNames);
    const char middle[2] = {static_cast<char>('A' + random_.Int(0, 25)), '\0'};
    auto phone = [&] { return Format("(%s) 555-%04d", city.area, random_.Int(100, 9999)); };
    std::string email = ToLower(first) + "." + ToLower(ReplaceAll(last, "'", "")) +
                        std::to_string(random_.Int(1, 99)) + "@example.com";
    customer_ << id << first << middle << last << phone() << phone();
    if (random_.Chance(0.6)) {
      customer_ << phone();
    } else {
      customer_ << nullptr;
    }
    customer_ << email << Format("%d %s", random_.Int(100, 9899), random_.Pick(kStreets))
              << city.name << "OH" << Format("%s%02d", city.zip, random_.Int(1, 99))
              << Iso(Plus(today_, -365 * random_.Int(21, 70) - random_.Int(0, 364)))
              << Format("%04d", random_.Int(0, 9999))
              << Format("%c%c%06d", 'A' + random_.Int(0, 25), 'A' + random_.Int(0, 25),
                        random_.Int(0, 999999))
              << (random_.Chance(0.93)  ? "OH"
                  : random_.Chance(0.5) ? "KY"
                                        : "WV")
              << random_.Pick(kEmployers) << random_.Pick(kJobs)
              << Cents(random_.Int(18, 65) * 100.0) << random_.Pick(kSchedules).code
              << random_.Int(1, 180) << random_.Int(1, 240)
              << (std::string(random_.Pick(kFirstNames)) + " " + random_.Pick(kLastNames))
              << phone() << Iso(since);
    customer_.Run();
    ++counts_.customers;
  }

  struct Car {
    std::string stock;
    double asking = 0;
  };

  // A vehicle; status D (sold on `sold`), R, W, S or H.
  Car Vehicle(int number, const char* status, Day in, const Day* sold, const LotInfo& lot) {
    const Model& model = random_.Pick(kModels);
    const int year = random_.Int(2010, 2021);
    const int age = 2026 - year;
    Car car;
    car.stock = Format("%c%d", lot.letter, 2300 + number);
    const double cost = Cents(random_.Real(2500, 6000) + (12 - age) * random_.Real(400, 900));
    const double recon = Cents(random_.Real(150, 1800));
    car.asking = std::round((cost + recon) * random_.Real(1.45, 1.8) / 100.0) * 100.0 - 5;
    vehicle_ << car.stock << Vin(random_, model.wmi, year, number) << year << model.make
             << model.model << random_.Pick(kTrims) << model.body << random_.Pick(kColors)
             << age * random_.Int(9000, 15000) + random_.Int(0, 9999)
             << (random_.Chance(0.95) ? "Automatic" : "Manual") << model.engine << cost << recon
             << car.asking << Cents(car.asking * 0.9) << status << Iso(in);
    if (sold != nullptr) {
      vehicle_ << Iso(*sold);
    } else {
      vehicle_ << nullptr;
    }
    vehicle_ << lot.name << model.category << random_.Pick(kSources)
             << (random_.Chance(0.85)  ? "In Hand"
                 : random_.Chance(0.5) ? "Pending"
                                       : "Lien")
             << Format("K%03d", number % 1000);
    vehicle_.Run();
    ++counts_.vehicles;
    return car;
  }

  void OtherSale(int id) {
    const Day date = Plus(today_, -random_.Int(0, 1300));
    Customer(id, date);
    const LotInfo& lot = kLots[random_.Int(0, 2)];
    const Car car = Vehicle(id, "D", Plus(date, -random_.Int(5, 90)), &date, lot);
    const bool cash = random_.Chance(0.45);
    const double price = car.asking - random_.Int(0, 6) * 100.0;
    const double tax = Cents(price * 0.0725);
    const double down = cash ? Cents(price + tax + 199) : Cents(random_.Int(10, 40) * 100.0);
    deal_ << id << id << car.stock << Iso(date) << price << 0.0 << 0.0 << down << 0.0 << tax
          << 199.0 << (cash ? 0.0 : Cents(price + tax + 199 - down)) << User()
          << (cash ? "Cash" : "Outside") << "F" << lot.name;
    deal_.Run();
    ++counts_.deals;
  }

  void FinancedSale(int i) {
    // Most accounts are from the last two years; a tail goes back to mid 2022.
    const int age_days = random_.Chance(0.75) ? random_.Int(0, 730) : random_.Int(731, 1380);
    const Day deal_date = Plus(today_, -age_days);
    Customer(i, deal_date);
    const LotInfo& lot = kLots[random_.Int(0, 2)];
    const Schedule& schedule = PickSchedule(random_);
    const int roll = random_.Int(1, 1000);

    // Account status first: it decides the vehicle's status.
    enum { kActive, kPaid, kChargedOff, kRepo, kVoid } state = kActive;
    const bool old = age_days > 300;
    if (roll <= 8) {
      state = kVoid;
    } else if (old && roll <= 220) {
      state = kPaid;
    } else if (old && roll <= 300) {
      state = kChargedOff;
    } else if (age_days > 90 && roll <= 380) {
      state = kRepo;
    }
    const char* vehicle_status = state == kRepo ? (random_.Chance(0.6) ? "R" : "W") : "D";
    const Car car =
        Vehicle(i, vehicle_status, Plus(deal_date, -random_.Int(5, 90)), &deal_date, lot);

    const double price = car.asking - random_.Int(0, 8) * 100.0;
    const bool trade = random_.Chance(0.2);
    // Down payment and trade together stay under half the price, so every
    // account finances a real amount.
    const double trade_allow = trade ? std::min(random_.Int(5, 30) * 100.0, price * 0.2) : 0.0;
    const double trade_payoff = trade && random_.Chance(0.4) ? random_.Int(2, 20) * 100.0 : 0.0;
    const double down = std::min(random_.Int(5, 30) * 100.0, std::round(price * 0.003) * 100.0);
    const double deferred = random_.Chance(0.25) ? random_.Int(2, 10) * 100.0 : 0.0;
    const double tax = Cents((price - trade_allow) * 0.0725);
    const double doc_fee = 199.0;
    const double financed = Cents(price + tax + doc_fee + trade_payoff - trade_allow - down);
    const std::string salesman = User();
    deal_ << i << i << car.stock << Iso(deal_date) << price << trade_allow << trade_payoff << down
          << deferred << tax << doc_fee << financed << salesman << "BHPH"
          << (state == kVoid ? "U" : "F") << lot.name;
    deal_.Run();
    ++counts_.deals;

    const double apr = std::round(random_.Real(18.0, 29.9) * 10) / 10;
    const int term = random_.Int(schedule.min_term, schedule.max_term);
    const double rate = apr / 100.0 / schedule.per_year;
    const double payment = Cents(financed * rate / (1 - std::pow(1 + rate, -term)));
    const Day first_due = Plus(deal_date, schedule.days);
    const Day final_due = Plus(first_due, schedule.days * (term - 1));
    const double late_fee = random_.Int(2, 7) * 5.0;
    finance_ << i << apr << term << schedule.code << payment << Iso(first_due) << Iso(final_due)
             << Cents(payment * term - financed) << Cents(payment * term) << late_fee
             << random_.Int(5, 10);
    finance_.Run();

    // Where the account stands today: payments due so far, how many of them
    // were missed, and the dates and amounts that follow from that.
    const int since_first = DaysBetween(first_due, today_);
    const int periods_due = since_first < 0 ? 0 : std::min(term, since_first / schedule.days + 1);
    if (state == kActive && periods_due >= term) state = kPaid;  // ran its term
    if (state == kPaid && periods_due == 0) state = kActive;
    int missed = 0;
    if (state == kActive) {
      const int lateness = random_.Int(1, 100);
      missed = lateness <= 55   ? 0
               : lateness <= 70 ? 1
               : lateness <= 82 ? 2
               : lateness <= 92 ? random_.Int(3, 4)
                                : random_.Int(5, 10);
      missed = std::min({missed, periods_due, std::max(1, 150 / schedule.days)});
    } else if (state == kChargedOff || state == kRepo) {
      missed = std::min(periods_due, random_.Int(3, 12));
    }
    const int made = state == kVoid ? 0 : periods_due - missed;
    const Day next_due = Plus(first_due, schedule.days * made);
    int days_late = 0;
    if (state == kActive) days_late = std::max(0, DaysBetween(next_due, today_));
    if (state == kChargedOff || state == kRepo) days_late = missed * schedule.days;
    const double balance =
        state == kPaid || state == kVoid ? 0.0 : Cents(BalanceAfter(financed, rate, payment, made));

    const char* status = state == kActive       ? "A"
                         : state == kPaid       ? "P"
                         : state == kChargedOff ? "C"
                         : state == kRepo       ? "R"
                                                : "X";
    Day last_paid =
        made == 0 ? deal_date : Plus(first_due, schedule.days * (made - 1) + random_.Int(-2, 2));
    last_paid = std::clamp(last_paid, deal_date, today_);
    const Day closed = std::min(Plus(last_paid, random_.Int(20, 90)), today_);
    const double past_due = state == kActive ? Cents(missed * payment) : 0.0;
    const double fees_due =
        state == kActive && days_late > 10 ? late_fee * std::max(1, missed) : 0.0;
    const int account_number = 10000 + i;
    account_ << account_number << i << i << car.stock << status << balance << payment
             << schedule.code;
    if (state == kActive) {
      account_ << Iso(next_due);
    } else {
      account_ << nullptr;
    }
    if (made > 0) {
      account_ << Iso(last_paid) << payment;
    } else {
      account_ << nullptr << nullptr;
    }
    account_ << days_late << past_due << fees_due << made
             << (state == kPaid || state == kVoid ? 0 : term - made) << salesman << User()
             << lot.name << Iso(deal_date);
    if (state == kActive) {
      account_ << nullptr;
    } else {
      account_ << Iso(state == kPaid ? last_paid : closed);
    }
    if (state == kRepo) {
      account_ << Iso(std::min(Plus(last_paid, random_.Int(30, 75)), today_));
    } else {
      account_ << nullptr;
    }
    account_ << (balance > 0 ? Cents(balance * (1 + rate / 2) + fees_due) : 0.0)
             << (random_.Chance(0.6) ? "Y" : "N") << Iso(Plus(today_, random_.Int(-30, 330)));
    account_.Run();
    ++counts_.accounts;

    if (state != kVoid)
      Receipts(account_number, financed, rate, payment, made, schedule, last_paid, late_fee,
               state == kPaid);
    if (state == kActive && days_late > 0) Promises(account_number, past_due, days_late);
    Notes(account_number, state == kActive && days_late > 0, state == kRepo, deal_date);
  }

  // The last (up to six) payments, newest on `last_paid`.
  void Receipts(int account, double financed, double rate, double payment, int made,
                const Schedule& schedule, Day last_paid, double late_fee, bool paid_off) {
    const int shown = std::min(made, 6);
    for (int k = made - shown + 1; k <= made; ++k) {
      const Day date = Plus(last_paid, -schedule.days * (made - k));
      const double before = BalanceAfter(financed, rate, payment, k - 1);
      const double interest = Cents(before * rate);
      const bool final_payment = paid_off && k == made;
      const double fee = random_.Chance(0.08) ? late_fee : 0.0;
      const double principal = final_payment ? Cents(before) : Cents(payment - interest);
      const double amount = Cents(principal + interest + fee);
      const double after = final_payment ? 0.0 : Cents(BalanceAfter(financed, rate, payment, k));
      const bool nsf = !final_payment && random_.Chance(0.01);
      const std::int64_t id = ++counts_.history;
      history_ << id << account << Iso(date)
               << (final_payment ? "PO"
                   : nsf         ? "NSF"
                                 : "PMT")
               << random_.Pick(kPayMethods) << (nsf ? -amount : amount) << principal << interest
               << fee << after << Format("R%07lld", static_cast<long long>(id)) << User()
               << (random_.Chance(0.01) ? 1 : 0);
      history_.Run();
    }
  }

  void Promises(int account, double past_due, int days_late) {
    const int count = days_late > 30 ? random_.Int(1, 3) : random_.Int(0, 1);
    for (int k = 0; k < count; ++k) {
      const Day promise = Plus(today_, random_.Int(-30, 14));
      const char* kept = promise >= today_ ? "P" : random_.Chance(0.45) ? "Y" : "N";
      promise_ << ++counts_.promises << account << Iso(Plus(promise, -random_.Int(1, 7)))
               << Iso(promise) << Cents(std::max(25.0, past_due * random_.Real(0.4, 1.0))) << kept
               << User();
      promise_.Run();
    }
  }

  void Notes(int account, bool late, bool repo, Day opened) {
    static constexpr std::array<const char*, 6> kCollection = {
        "Called customer, left voicemail.",
        "Customer promised to pay Friday.",
        "Spoke with customer; hours were cut at work, will pay on payday.",
        "Texted payment reminder.",
        "No answer at home or cell; called reference.",
        "Customer disputes late fee; waived once."};
    static constexpr std::array<const char*, 4> kGeneral = {
        "Customer updated insurance card.", "Changed payment day to match payday.",
        "New phone number on file.", "Customer asked for payoff quote."};
    const int count = random_.Int(0, late ? 4 : 2);
    for (int k = 0; k < count; ++k) {
      const int age = DaysBetween(opened, today_);
      const Day date = Plus(today_, -random_.Int(0, std::max(0, std::min(age, late ? 45 : 400))));
      const char* type = late ? "COL" : "GEN";
      std::string text = late ? random_.Pick(kCollection) : random_.Pick(kGeneral);
      if (repo && k == 0) {
        type = "REPO";
        text = "Vehicle recovered; personal property inventoried.";
      } else if (late && random_.Chance(0.05)) {
        type = "SKIP";
        text = "Phone disconnected; checking employer and references.";
      }
      note_ << ++counts_.notes << account << Iso(date) << User() << type << text;
      note_.Run();
    }
  }

  sqlite3* db_;
  const DemoDatabaseOptions& options_;
  std::vector<std::string> users_;
  Random random_;
  Day today_;
  Insert customer_, vehicle_, deal_, finance_, account_, history_, promise_, note_;
  DemoDatabaseCounts counts_;
};

struct Connection {
  sqlite3* db = nullptr;
  ~Connection() { sqlite3_close(db); }
};

}  // namespace

std::string DefaultSchemaPath() { return DemoDataFolder() + "/schema.sql"; }

DemoDatabaseCounts GenerateDemoDatabase(const std::string& path,
                                        const DemoDatabaseOptions& options) {
  if (options.accounts < 0) throw Error("the number of accounts must not be negative");
  if (!options.today.empty()) {
    const std::optional<std::string> iso = IsoDate(options.today);
    if (!iso || *iso != options.today) {
      throw Error("'" + options.today + "' is no date of the form YYYY-MM-DD");
    }
  }
  const std::string schema_path =
      options.schema_path.empty() ? DefaultSchemaPath() : options.schema_path;
  std::ifstream in(schema_path, std::ios::binary);
  if (!in) throw Error("the schema " + schema_path + " cannot be read");
  std::ostringstream schema;
  schema << in.rdbuf();

  std::vector<std::string> users;
  for (const std::string& user :
       options.users.empty() ? DemoUsers(DemoDataFolder()) : options.users) {
    if (!user.empty()) users.push_back(user);
  }
  if (users.empty()) users = {"admin", "sales1", "sales2", "collector1", "collector2"};

  // Build beside the target and rename it over only when complete.
  const std::string temp = path + ".tmp" + std::to_string(::getpid());
  std::error_code ec;
  fs::remove(temp, ec);
  DemoDatabaseCounts counts;
  try {
    Connection connection;
    // One thread uses this connection: no mutexes.
    if (sqlite3_open_v2(temp.c_str(), &connection.db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK) {
      throw Error("cannot create the database " + path + ": " + sqlite3_errmsg(connection.db));
    }
    // Nothing to recover if this fails: the file is thrown away. A big cache
    // keeps the B-trees in memory until the commit.
    Exec(connection.db,
         "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA page_size=8192; "
         "PRAGMA locking_mode=EXCLUSIVE; PRAGMA temp_store=MEMORY; PRAGMA cache_size=-524288;");
    Exec(connection.db, "BEGIN");
    std::vector<std::string> tables, indexes;
    SplitSchema(connection.db, schema.str(), tables, indexes);
    {
      Generator generator(connection.db, options, users);
      counts = generator.Run();
    }
    for (const std::string& sql : indexes) Exec(connection.db, sql);
    Exec(connection.db, "COMMIT");
    // Statistics for the planner from a sample: a full ANALYZE would cost
    // as much as the indexes.
    Exec(connection.db, "PRAGMA analysis_limit=2000; ANALYZE");
  } catch (...) {
    fs::remove(temp, ec);
    throw;
  }
  fs::rename(temp, path, ec);
  if (ec) {
    const std::string reason = ec.message();
    fs::remove(temp, ec);
    throw Error("cannot write the database " + path + ": " + reason);
  }
  return counts;
}

}  // namespace cvve::reportengine
