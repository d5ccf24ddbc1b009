#include "db/local/DemoInstance.h"

#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/local/LocalConnection.h"
#include "db/local/LocalEngine.h"
#include "db/script/ScriptReader.h"
#include "platform/SystemInfo.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <vector>

namespace DemoInstance {

namespace {

// The generated rows describe the business as it stood at the end of this day.
const QDate LastDay(2025, 3, 31);
const QDate FirstOrderDay(2023, 4, 1);
const QDate FirstAccessDay(2024, 4, 1);

OraError creationFailure(const QString& what) {
  return OraError(1501, QStringLiteral("CREATE DATABASE failed: %1; the demo instance was not created").arg(what));
}

// The same error with where it happened, so a broken demo.sql names its line.
OraError withContext(const OraError& e, const QString& where) {
  return OraError(e.number(), QStringLiteral("%1 (%2; the demo instance was not created)").arg(e.text(), where));
}

// Turns the build's stages into one percentage, told to the caller only when it moves.
class Meter final {
public:
  explicit Meter(const Progress& progress) : m_progress(progress) {}

  // Starts the stage that takes the build from percent from to percent to.
  void stage(int from, int to, const QString& step) {
    m_from = from;
    m_to = to;
    m_step = step;
    report(from, true);
  }
  void advance(qint64 done, qint64 total) {
    report(m_from + int((m_to - m_from) * done / std::max<qint64>(total, 1)), false);
  }

private:
  void report(int percent, bool newStep) {
    if (m_progress && (newStep || percent != m_percent))
      m_progress(percent, m_step);
    m_percent = percent;
  }

  const Progress& m_progress;
  int m_from = 0;
  int m_to = 0;
  int m_percent = -1;
  QString m_step;
};

// Same seed, same rows: mt19937's sequence is fixed by the standard, unlike the distributions.
class Dice final {
public:
  explicit Dice(quint32 seed) : m_engine(seed) {}
  int below(int n) { return int(m_engine() % quint32(n)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  bool chance(int percent) { return below(100) < percent; }
  template <typename T, size_t N> const T& pick(const T (&items)[N]) { return items[below(int(N))]; }

private:
  std::mt19937 m_engine;
};

QString text(const char* utf8) { return QString::fromUtf8(utf8); }

// Column values as a row stores them: an empty text is NULL, as in Oracle, and a DATE is its
// canonical text.
QVariant str(const QString& value) { return value.isEmpty() ? QVariant() : QVariant(value); }
QVariant num(qint64 value) { return qlonglong(value); }
// Formatted by hand rather than through QDateTime, so the local time zone's daylight saving can
// never move a generated time.
QVariant stamp(const QDate& day, int secondOfDay = 0) {
  return QStringLiteral("%1 %2:%3:%4")
      .arg(day.toString(QStringLiteral("yyyy/MM/dd")))
      .arg(secondOfDay / 3600, 2, 10, QChar(u'0'))
      .arg(secondOfDay / 60 % 60, 2, 10, QChar(u'0'))
      .arg(secondOfDay % 60, 2, 10, QChar(u'0'));
}

struct Name final {
  const char* kanji;
  const char* kana;
  const char* latin;
};

const Name FamilyNames[] = {{"佐藤", "サトウ", "sato"},
                            {"鈴木", "スズキ", "suzuki"},
                            {"高橋", "タカハシ", "takahashi"},
                            {"田中", "タナカ", "tanaka"},
                            {"伊藤", "イトウ", "ito"},
                            {"渡辺", "ワタナベ", "watanabe"},
                            {"山本", "ヤマモト", "yamamoto"},
                            {"中村", "ナカムラ", "nakamura"},
                            {"小林", "コバヤシ", "kobayashi"},
                            {"加藤", "カトウ", "kato"},
                            {"吉田", "ヨシダ", "yoshida"},
                            {"山田", "ヤマダ", "yamada"},
                            {"佐々木", "ササキ", "sasaki"},
                            {"松本", "マツモト", "matsumoto"},
                            {"井上", "イノウエ", "inoue"},
                            {"木村", "キムラ", "kimura"},
                            {"清水", "シミズ", "shimizu"},
                            {"山崎", "ヤマザキ", "yamazaki"},
                            {"森", "モリ", "mori"},
                            {"池田", "イケダ", "ikeda"},
                            {"橋本", "ハシモト", "hashimoto"},
                            {"阿部", "アベ", "abe"},
                            {"石川", "イシカワ", "ishikawa"},
                            {"前田", "マエダ", "maeda"},
                            {"藤田", "フジタ", "fujita"},
                            {"小川", "オガワ", "ogawa"},
                            {"岡田", "オカダ", "okada"},
                            {"後藤", "ゴトウ", "goto"},
                            {"長谷川", "ハセガワ", "hasegawa"},
                            {"村上", "ムラカミ", "murakami"},
                            {"近藤", "コンドウ", "kondo"},
                            {"石井", "イシイ", "ishii"},
                            {"坂本", "サカモト", "sakamoto"},
                            {"遠藤", "エンドウ", "endo"},
                            {"青木", "アオキ", "aoki"},
                            {"藤井", "フジイ", "fujii"},
                            {"西村", "ニシムラ", "nishimura"},
                            {"福田", "フクダ", "fukuda"},
                            {"太田", "オオタ", "ota"},
                            {"三浦", "ミウラ", "miura"},
                            {"藤原", "フジワラ", "fujiwara"},
                            {"岡本", "オカモト", "okamoto"},
                            {"松田", "マツダ", "matsuda"},
                            {"中川", "ナカガワ", "nakagawa"},
                            {"野口", "ノグチ", "noguchi"},
                            {"桑原", "クワバラ", "kuwabara"},
                            {"生田", "イクタ", "ikuta"},
                            {"神谷", "カミヤ", "kamiya"},
                            {"大槻", "オオツキ", "otsuki"},
                            {"鶴田", "ツルタ", "tsuruta"},
                            {"宇野", "ウノ", "uno"},
                            {"柏木", "カシワギ", "kashiwagi"}};

const Name GivenNames[] = {
    {"翔太", "ショウタ", ""}, {"大輔", "ダイスケ", ""},   {"健一", "ケンイチ", ""}, {"誠", "マコト", ""},
    {"拓也", "タクヤ", ""},   {"直樹", "ナオキ", ""},     {"亮", "リョウ", ""},     {"浩二", "コウジ", ""},
    {"隆", "タカシ", ""},     {"和也", "カズヤ", ""},     {"悠斗", "ユウト", ""},   {"蓮", "レン", ""},
    {"陽介", "ヨウスケ", ""}, {"博之", "ヒロユキ", ""},   {"修", "オサム", ""},     {"聡", "サトシ", ""},
    {"雄一", "ユウイチ", ""}, {"昌平", "ショウヘイ", ""}, {"達也", "タツヤ", ""},   {"俊介", "シュンスケ", ""},
    {"陽子", "ヨウコ", ""},   {"美穂", "ミホ", ""},       {"由美", "ユミ", ""},     {"恵", "メグミ", ""},
    {"裕子", "ユウコ", ""},   {"さくら", "サクラ", ""},   {"彩", "アヤ", ""},       {"真由美", "マユミ", ""},
    {"奈々", "ナナ", ""},     {"明日香", "アスカ", ""},   {"千尋", "チヒロ", ""},   {"香織", "カオリ", ""},
    {"結衣", "ユイ", ""},     {"智子", "トモコ", ""},     {"直美", "ナオミ", ""},   {"沙織", "サオリ", ""},
    {"葵", "アオイ", ""},     {"優子", "ユウコ", ""},     {"麻衣", "マイ", ""},     {"静香", "シズカ", ""}};

const Name CompanyNames[] = {{"東和", "トウワ", "towa"},           {"三栄", "サンエイ", "san-ei"},
                             {"大和田", "オオワダ", "owada"},      {"北斗", "ホクト", "hokuto"},
                             {"丸岡", "マルオカ", "maruoka"},      {"光陽", "コウヨウ", "koyo"},
                             {"朝日野", "アサヒノ", "asahino"},    {"協進", "キョウシン", "kyoshin"},
                             {"緑川", "ミドリカワ", "midorikawa"}, {"浜松屋", "ハママツヤ", "hamamatsuya"},
                             {"双葉", "フタバ", "futaba"},         {"豊栄", "ホウエイ", "hoei"},
                             {"富士見", "フジミ", "fujimi"},       {"青葉", "アオバ", "aoba"},
                             {"日進", "ニッシン", "nisshin"},      {"千代田", "チヨダ", "chiyoda"},
                             {"若草", "ワカクサ", "wakakusa"},     {"白鷺", "シラサギ", "shirasagi"},
                             {"港南", "コウナン", "konan"},        {"錦", "ニシキ", "nishiki"},
                             {"桜井", "サクライ", "sakurai"},      {"昭栄", "ショウエイ", "shoei"},
                             {"曙", "アケボノ", "akebono"},        {"八雲", "ヤクモ", "yakumo"}};

const Name Trades[] = {
    {"商事", "ショウジ", ""},     {"工業", "コウギョウ", ""},   {"製作所", "セイサクショ", ""},
    {"印刷", "インサツ", ""},     {"建設", "ケンセツ", ""},     {"設計事務所", "セッケイジムショ", ""},
    {"不動産", "フドウサン", ""}, {"電機", "デンキ", ""},       {"物流", "ブツリュウ", ""},
    {"食品", "ショクヒン", ""},   {"運輸", "ウンユ", ""},       {"企画", "キカク", ""},
    {"測量", "ソクリョウ", ""},   {"システム", "システム", ""}, {"薬局", "ヤッキョク", ""}};

const char* const CompanyForms[] = {"株式会社", "株式会社", "株式会社", "有限会社", "合同会社"};

struct Place final {
  const char* prefecture;
  const char* town; // city and town, without the block number
  const char* zip;
  const char* areaCode;
};

const Place Places[] = {{"東京都", "新宿区西新宿", "160-0023", "03"},
                        {"東京都", "世田谷区三軒茶屋", "154-0024", "03"},
                        {"東京都", "練馬区豊玉北", "176-0012", "03"},
                        {"東京都", "八王子市旭町", "192-0083", "042"},
                        {"神奈川県", "横浜市西区みなとみらい", "220-0012", "045"},
                        {"埼玉県", "さいたま市浦和区高砂", "330-0063", "048"},
                        {"千葉県", "千葉市中央区富士見", "260-0015", "043"},
                        {"千葉県", "船橋市本町", "273-0005", "047"},
                        {"大阪府", "大阪市北区梅田", "530-0001", "06"},
                        {"兵庫県", "神戸市中央区三宮町", "650-0021", "078"},
                        {"愛知県", "名古屋市中区栄", "460-0008", "052"},
                        {"静岡県", "静岡市葵区呉服町", "420-0031", "054"},
                        {"北海道", "札幌市中央区北一条西", "060-0001", "011"},
                        {"宮城県", "仙台市青葉区一番町", "980-0811", "022"},
                        {"新潟県", "新潟市中央区万代", "950-0088", "025"},
                        {"石川県", "金沢市香林坊", "920-0961", "076"},
                        {"広島県", "広島市中区紙屋町", "730-0031", "082"},
                        {"岡山県", "岡山市北区表町", "700-0822", "086"},
                        {"香川県", "高松市丸亀町", "760-0029", "087"},
                        {"愛媛県", "松山市大街道", "790-0004", "089"},
                        {"福岡県", "福岡市博多区博多駅前", "812-0011", "092"},
                        {"熊本県", "熊本市中央区下通", "860-0807", "096"},
                        {"鹿児島県", "鹿児島市東千石町", "892-0842", "099"},
                        {"沖縄県", "那覇市久茂地", "900-0015", "098"}};

const char* const Buildings[] = {"第一中央ビル", "グランドール", "サンライズ",   "桜ヶ丘ハイツ",
                                 "城北ビル",     "リバーサイド", "パークテラス", "駅前第二ビル"};

const char* const Notes[] = {"請求書は郵送希望", "午前中の配達を希望",     "代表者変更あり（2023年）", "法人割引適用",
                             "置き配不可",       "請求書の宛名は経理部宛", "年末年始は受取不可",       "FAX注文が主"};

const char* const Carriers[] = {"東和急便", "さくら運輸", "港北ロジスティクス"};

struct Topic final {
  const char* kind; // TAIO_KBN
  const char* subject;
  const char* body; // %1: the customer's name
};

const Topic Topics[] = {
    {"01", "納期の問い合わせ", "%1様より納期確認のお電話。出荷予定日をご案内し了承いただいた。"},
    {"01", "請求書再発行の依頼", "%1様より請求書紛失のため再発行の依頼。本日再送付済み。"},
    {"02", "商品の破損連絡",
     "%1様より配送中の破損のご連絡（メール、写真添付あり）。代替品を手配し、破損品は回収予定。"},
    {"03", "見積依頼", "%1様より問合せフォームで見積依頼。数量割引の条件を添えて見積書を送付した。"},
    {"01", "配送先住所の変更", "%1様より事務所移転に伴う配送先変更の連絡。次回出荷分から反映。"},
    {"02", "ポイント残高の確認", "%1様よりポイント残高と有効期限のお問い合わせ。メールで回答済み。"},
    {"01", "返品の相談", "%1様より数量誤りによる返品のご相談。未開封のため返品受付、返送伝票を送付。"},
    {"03", "カタログ送付依頼", "%1様より最新カタログの送付依頼。本日発送。"},
    {"04", "定期訪問", "%1様を訪問。来期の備品購入計画をヒアリング。オフィス家具の提案を継続。"}};

const char* const Pages[] = {"/",        "/mypage",          "/mypage/orders",
                             "/cart",    "/order/confirm",   "/order/complete",
                             "/contact", "/campaign/spring", "/login"};
const char* const SearchWords[] = {"ボールペン", "コピー用紙", "ファイル", "トナー", "シュレッダー", "封筒", "付箋"};
const char* const Networks[] = {"203.0.113.", "198.51.100.", "192.0.2."};

struct Customer final {
  qint64 number = 0;
  bool company = false;
  QString name, kana, tanto;
  int weight = 1;
  QDate since;
  int points = 0;
  int pointEvents = 0;
};

struct Product final {
  QString code;
  qint64 price = 0;
  QDate lastDay; // null while on sale
};

struct Order final {
  qint64 number = 0;
  int customer = 0; // index into the customers
  QDate day;
};

// Customers, their orders and everything that follows from them, inserted in one transaction.
class Generator final {
public:
  Generator(OraDatabase& db, Meter& meter)
      : m_db(db), m_local(dynamic_cast<LocalConnection&>(db.connection())), m_meter(meter), m_dice(20250331) {}

  void run() {
    loadProducts();
    m_db.connection().begin();
    m_meter.stage(6, 8, QStringLiteral("顧客データを作成しています"));
    customers();
    m_meter.stage(8, 28, QStringLiteral("受注データを作成しています"));
    orders();
    m_meter.stage(28, 30, QStringLiteral("対応履歴を作成しています"));
    contacts();
    m_meter.stage(30, 96, QStringLiteral("アクセスログを作成しています"));
    accessLog();
    m_db.connection().commit();
  }

private:
  // Through one prepared statement per table: the rows are the same as those of INSERT
  // statements in Oracle SQL, but each of those would be parsed and translated on its own, which
  // for hundreds of thousands of rows takes most of the build's time.
  void insert(const char* table, const QVariantList& values) {
    const QString name = QString::fromLatin1(table);
    std::unique_ptr<SqliteStmt>& statement = m_inserts[name];
    std::lock_guard lock(m_local.mutex());
    try {
      m_local.beginPending();
      if (!statement) {
        QStringList places;
        for (qsizetype i = 1; i <= values.size(); ++i)
          places << u'?' + QString::number(i);
        statement = std::make_unique<SqliteStmt>(
            m_local.db(),
            QStringLiteral("INSERT INTO main.%1 VALUES (%2)").arg(SqlTranslator::quoteName(name), places.join(u',')));
      }
      statement->bindAll(values);
      statement->step();
      statement->reset();
    } catch (const SqliteFailure& f) {
      throw m_local.oracleError(f, Owner, name, SqlErrors::Dml::Insert);
    }
  }

  qint64 nextNumber(const char* sequence) {
    auto row = m_db.CreateDynaset(QStringLiteral("SELECT %1.NEXTVAL FROM DUAL").arg(QString::fromLatin1(sequence)),
                                  OraDynaset::ReadOnly);
    return row->Fields(0).toLongLong();
  }

  int secondOfWorkday() { return m_dice.between(9 * 3600, 18 * 3600 - 1); }

  QString phone(const Place& place) {
    const QString area = QString::fromLatin1(place.areaCode);
    const int localDigits = 10 - int(area.size());
    const int first = localDigits - 4;
    return QStringLiteral("%1-%2-%3")
        .arg(area)
        .arg(m_dice.between(first == 4 ? 2000 : 200, first == 4 ? 6999 : 899))
        .arg(m_dice.below(10000), 4, 10, QChar(u'0'));
  }

  void loadProducts() {
    auto rows = m_db.CreateDynaset(
        QStringLiteral("SELECT SHOHIN_CD, HYOJUN_TANKA, HANBAI_SHURYO_YMD FROM SHOHIN ORDER BY SHOHIN_CD"),
        OraDynaset::ReadOnly);
    for (; !rows->IsEOF(); rows->MoveNext()) {
      const QVariant last = rows->Fields(2);
      m_products.push_back(
          {rows->Fields(0).toString(), rows->Fields(1).toLongLong(),
           last.isValid() ? QDate::fromString(last.toString().left(10), QStringLiteral("yyyy/MM/dd")) : QDate()});
    }
    if (m_products.empty())
      throw OraError(1403, QStringLiteral("no data found: demo.sql left SHOHIN empty"));
  }

  void customers() {
    for (int i = 0; i < Customers; ++i) {
      m_meter.advance(i, Customers);
      Customer c;
      c.number = nextNumber("SEQ_KOKYAKU_NO");
      c.company = m_dice.chance(35);
      const Place& place = m_dice.pick(Places);
      QString mailUser;
      if (c.company) {
        const Name& core = m_dice.pick(CompanyNames);
        const Name& trade = m_dice.pick(Trades);
        const QString form = text(m_dice.pick(CompanyForms));
        const QString body = text(core.kanji) + text(trade.kanji);
        c.name = m_dice.chance(70) ? form + u' ' + body : body + u' ' + form;
        c.kana = text(core.kana) + text(trade.kana);
        c.tanto = QStringLiteral("S000%1").arg(m_dice.between(1, 5));
        c.weight = m_dice.between(3, 12);
        mailUser = QStringLiteral("info.%1").arg(QString::fromLatin1(core.latin));
      } else {
        const Name& family = m_dice.pick(FamilyNames);
        const Name& given = m_dice.pick(GivenNames);
        c.name = text(family.kanji) + u' ' + text(given.kanji);
        c.kana = text(family.kana) + u' ' + text(given.kana);
        c.weight = m_dice.between(1, 4);
        mailUser = QString::fromLatin1(family.latin);
      }
      c.since = QDate(2016, 1, 1).addDays(m_dice.below(int(QDate(2016, 1, 1).daysTo(QDate(2024, 12, 31)))));
      const QString mail = m_dice.chance(85) ? QStringLiteral("%1.%2@example.%3")
                                                   .arg(mailUser)
                                                   .arg(c.number)
                                                   .arg(QString::fromLatin1(m_dice.pick({"com", "net", "org"})))
                                             : QString();
      QString building;
      if (m_dice.chance(30)) {
        building = text(m_dice.pick(Buildings));
        if (c.company) {
          building += QStringLiteral(" %1F").arg(m_dice.between(2, 9));
        } else {
          const int floor = m_dice.between(1, 8);
          building += QStringLiteral(" %1号室").arg(floor * 100 + m_dice.between(1, 12));
        }
      }
      const QString tel = c.company || m_dice.chance(40) ? phone(place)
                                                         : QStringLiteral("0%1-%2-%3")
                                                               .arg(m_dice.pick({90, 80, 70}))
                                                               .arg(m_dice.below(10000), 4, 10, QChar(u'0'))
                                                               .arg(m_dice.below(10000), 4, 10, QChar(u'0'));
      const QDate birthday = c.company ? QDate() : QDate(1950, 1, 1).addDays(m_dice.below(365 * 53));
      const QDate changed = m_dice.chance(40) ? c.since.addDays(m_dice.between(30, 400)) : QDate();
      insert("KOKYAKU", {num(c.number),
                         str(c.name),
                         str(c.kana),
                         str(c.company ? QStringLiteral("2") : QStringLiteral("1")),
                         str(text(place.zip)),
                         str(text(place.prefecture)),
                         str(text(place.town) + QStringLiteral("%1-%2-%3")
                                                    .arg(m_dice.between(1, 5))
                                                    .arg(m_dice.between(1, 30))
                                                    .arg(m_dice.between(1, 20))),
                         str(building),
                         str(tel),
                         c.company && m_dice.chance(60) ? str(phone(place)) : QVariant(),
                         str(mail),
                         birthday.isValid() ? stamp(birthday) : QVariant(),
                         str(c.tanto),
                         c.company ? num(m_dice.between(3, 50) * 100000) : QVariant(),
                         c.company ? num(m_dice.pick({20, 25, 31})) : QVariant(),
                         str(QString(QChar(u'A' + m_dice.below(3)))),
                         num(0),
                         stamp(c.since),
                         m_dice.chance(15) ? str(text(m_dice.pick(Notes))) : QVariant(),
                         stamp(c.since, secondOfWorkday()),
                         changed.isValid() && changed <= LastDay ? stamp(changed, secondOfWorkday()) : QVariant()});
      // Customers from before the current system still carry the old system's memo.
      if (c.since.year() < 2019)
        insert("KOKYAKU_MEMO",
               {num(c.number),
                str(QStringLiteral("旧システムより移行（%1）。\n取引開始 %2、%3。")
                        .arg(QStringLiteral("2023/01/07"), c.since.toString(QStringLiteral("yyyy年M月")),
                             c.company ? QStringLiteral("法人窓口は総務部") : QStringLiteral("カタログ送付希望あり"))),
                stamp(QDate(2023, 1, 7), 7800)});
      m_customers.push_back(c);
    }
    for (size_t i = 0; i < m_customers.size(); ++i)
      for (int w = 0; w < m_customers[i].weight; ++w)
        m_weighted.push_back(int(i));
  }

  int someCustomer() { return m_weighted[size_t(m_dice.below(int(m_weighted.size())))]; }

  void orders() {
    std::vector<Order> all(Orders);
    for (Order& o : all) {
      o.customer = someCustomer();
      const QDate since = std::max(m_customers[size_t(o.customer)].since, FirstOrderDay);
      o.day = since.addDays(m_dice.below(int(since.daysTo(LastDay)) + 1));
    }
    std::stable_sort(all.begin(), all.end(), [](const Order& a, const Order& b) { return a.day < b.day; });

    qint64 shipment = 0, invoice = 0, payment = 0;
    for (size_t i = 0; i < all.size(); ++i) {
      m_meter.advance(qint64(i), Orders);
      Order& o = all[i];
      o.number = nextNumber("SEQ_JUCHU_NO");
      Customer& c = m_customers[size_t(o.customer)];
      const int age = int(o.day.daysTo(LastDay));
      // How far the order has come by the last day: older ones are paid, a few stay unpaid.
      int state = age > 60   ? (m_dice.chance(3) ? 2 : 3)
                  : age > 30 ? m_dice.between(2, 3)
                  : age > 7  ? m_dice.between(1, 2)
                             : m_dice.between(0, 1);
      if (m_dice.chance(4))
        state = 9;

      qint64 net = 0;
      std::vector<QVariantList> lines(size_t(c.company ? m_dice.between(1, 6) : m_dice.between(1, 4)));
      for (size_t line = 0; line < lines.size(); ++line) {
        const Product* p = nullptr;
        while (!p) {
          const Product& candidate = m_products[size_t(m_dice.below(int(m_products.size())))];
          if (!candidate.lastDay.isValid() || candidate.lastDay >= o.day)
            p = &candidate;
        }
        const int quantity = c.company ? m_dice.between(1, 30) : m_dice.between(1, 5);
        net += quantity * p->price;
        lines[line] = {num(o.number), num(qint64(line) + 1), str(p->code),
                       num(quantity), num(p->price),         num(quantity * p->price)};
      }
      const qint64 tax = net / 10;
      insert("JUCHU", {num(o.number), num(c.number), stamp(o.day), stamp(o.day.addDays(m_dice.between(2, 7))),
                       str(QStringLiteral("0%1").arg(c.company ? m_dice.between(1, 3) : m_dice.pick({1, 1, 1, 2}))),
                       num(net), num(tax), str(c.tanto.isEmpty() ? text(m_dice.pick({"S0006", "S0007"})) : c.tanto),
                       str(QString::number(state)),
                       state == 9 ? str(QStringLiteral("お客様都合によりキャンセル")) : QVariant()});
      for (const QVariantList& line : lines)
        insert("JUCHU_MEISAI", line);
      if (!c.company && state != 9)
        points(c, o, net);
      if (state == 9 || state < 1)
        continue;

      const QDate shipped = std::min(o.day.addDays(m_dice.between(1, 3)), LastDay);
      ++shipment;
      insert("SHUKKA",
             {num(shipment), num(o.number), num(c.number), stamp(shipped, m_dice.between(13, 17) * 3600),
              str(text(Carriers[shipment % 3])),
              str(QStringLiteral("%1-%2").arg(4100 + shipment % 3).arg(shipment + 10000000, 8, 10, QChar(u'0'))),
              str(shipped.daysTo(LastDay) > 3 ? QStringLiteral("2") : QStringLiteral("1"))});
      if (state < 2)
        continue;
      const QDate billed = std::min(shipped.addDays(m_dice.between(0, 3)), LastDay);
      ++invoice;
      const qint64 invoiceNumber = 500000 + invoice;
      insert("SEIKYU", {num(invoiceNumber), num(c.number), num(o.number), stamp(billed), num(net + tax),
                        stamp(billed.addDays(30)), QVariant()});
      if (state < 3)
        continue;
      const QDate paid = std::min(billed.addDays(m_dice.between(3, 25)), LastDay);
      ++payment;
      const int method = c.company ? 1 : m_dice.between(2, 4);
      insert("NYUKIN", {num(700000 + payment), num(c.number), num(invoiceNumber), stamp(paid), num(net + tax),
                        str(QString::number(method)), method == 1 ? str(c.kana) : QVariant()});
    }
    for (const Customer& c : m_customers)
      if (c.points != 0)
        m_db.ExecuteSQL(
            QStringLiteral("UPDATE KOKYAKU SET POINT_ZANDAKA = %1 WHERE KOKYAKU_NO = %2").arg(c.points).arg(c.number));
    m_orders = std::move(all);
  }

  // One point per hundred yen; now and then some of them are spent on the order.
  void points(Customer& c, const Order& o, qint64 net) {
    if (c.points >= 300 && m_dice.chance(20)) {
      const int used = std::min(c.points, m_dice.between(1, 5) * 100);
      c.points -= used;
      insert("POINT_RIREKI",
             {num(c.number), num(++c.pointEvents), stamp(o.day), num(-used), str(QStringLiteral("02")), num(o.number)});
    }
    const int earned = int(net / 100);
    c.points += earned;
    insert("POINT_RIREKI",
           {num(c.number), num(++c.pointEvents), stamp(o.day), num(earned), str(QStringLiteral("01")), num(o.number)});
  }

  void contacts() {
    std::vector<std::pair<QDate, int>> when(ContactRecords);
    for (auto& [day, customer] : when) {
      customer = someCustomer();
      const QDate since = std::max(m_customers[size_t(customer)].since, FirstOrderDay);
      day = since.addDays(m_dice.below(int(since.daysTo(LastDay)) + 1));
    }
    std::stable_sort(when.begin(), when.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    int number = 0;
    for (const auto& [day, customer] : when) {
      m_meter.advance(number, ContactRecords);
      const Customer& c = m_customers[size_t(customer)];
      const Topic& topic = m_dice.pick(Topics);
      // Half of them are about one of the customer's orders placed before the call.
      qint64 order = 0;
      if (m_dice.chance(50))
        for (const Order& o : m_orders)
          if (o.customer == customer && o.day <= day)
            order = o.number;
      insert("TAIO_RIREKI",
             {num(++number), num(c.number), order ? num(order) : QVariant(), stamp(day, secondOfWorkday()),
              str(text(topic.kind)), str(c.tanto.isEmpty() ? text(m_dice.pick({"S0006", "S0007"})) : c.tanto),
              str(text(topic.subject)), str(text(topic.body).arg(c.name))});
    }
  }

  // The web shop's log: mostly logged-on customers (the busy ones far more often), the rest guests.
  void accessLog() {
    std::vector<int> visitors;
    for (size_t i = 0; i < m_customers.size(); ++i)
      for (int w = 0; w < (m_customers[i].company ? 1 : m_customers[i].weight * m_customers[i].weight); ++w)
        visitors.push_back(int(i));
    qint64 second = 0;
    for (int row = 1; row <= AccessLogRows; ++row) {
      m_meter.advance(row, AccessLogRows);
      second += m_dice.between(1, 300);
      const QDate day = FirstAccessDay.addDays(second / 86400);
      const int visitor = m_dice.chance(85) ? visitors[size_t(m_dice.below(int(visitors.size())))] : -1;
      QString url;
      switch (m_dice.below(4)) {
      case 0: url = QStringLiteral("/items/") + m_products[size_t(m_dice.below(int(m_products.size())))].code; break;
      case 1: url = QStringLiteral("/search?q=") + text(m_dice.pick(SearchWords)); break;
      default: url = text(m_dice.pick(Pages)); break;
      }
      const QByteArray session =
          QCryptographicHash::hash(QStringLiteral("%1/%2/%3").arg(visitor).arg(day.toJulianDay()).arg(row % 7).toUtf8(),
                                   QCryptographicHash::Md5)
              .toHex()
              .toUpper();
      insert("ACCESS_LOG",
             {num(row), visitor < 0 ? QVariant() : num(m_customers[size_t(visitor)].number),
              stamp(day, int(second % 86400)), str(url),
              str(text(Networks[size_t(visitor < 0 ? 0 : visitor % 3)]) + QString::number(m_dice.between(1, 254))),
              str(QString::fromLatin1(session))});
    }
  }

  OraDatabase& m_db;
  LocalConnection& m_local;
  Meter& m_meter;
  Dice m_dice;
  std::vector<Product> m_products;
  std::vector<Customer> m_customers;
  std::vector<int> m_weighted; // customer indexes, each as often as it orders
  std::vector<Order> m_orders;
  std::map<QString, std::unique_ptr<SqliteStmt>> m_inserts;
};

void runScript(OraDatabase& db, const QString& path, Meter& meter) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    throw creationFailure(QStringLiteral("cannot read %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
  const QString name = QFileInfo(path).fileName();
  const QList<ScriptItem> items = ScriptReader::read(QString::fromUtf8(file.readAll()));
  db.connection().begin();
  for (qsizetype i = 0; i < items.size(); ++i) {
    meter.advance(i, items.size());
    const ScriptItem& item = items[i];
    switch (item.kind) {
    case ScriptItem::Kind::Statement: try { db.ExecuteSQL(item.text);
      } catch (const OraError& e) {
        throw withContext(e, QStringLiteral("%1 line %2").arg(name).arg(item.line));
      }
      break;
    case ScriptItem::Kind::Failure:
      throw creationFailure(QStringLiteral("%1 line %2: %3").arg(name).arg(item.line).arg(item.text));
    case ScriptItem::Kind::Unterminated:
      throw creationFailure(
          QStringLiteral("%1 line %2: the statement does not end with ';' or a '/' line").arg(name).arg(item.line));
    case ScriptItem::Kind::Exit: db.connection().commit(); return;
    case ScriptItem::Kind::Prompt:
    case ScriptItem::Kind::ErrorMode:
      // The demo must come out whole, so an error always stops it, whatever the script asks.
      break;
    }
  }
  db.connection().commit();
}

// A build folder is named after its builder's process, so that one left behind by a builder
// that was stopped mid-way can be told from one that a running process is still filling.
void removeAbandonedBuilds(const QString& parent, const QString& prefix) {
  for (const QString& name :
       QDir(parent).entryList({prefix + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
    bool isNumber = false;
    const qint64 pid = name.mid(prefix.size()).section(u'-', 0, 0).toLongLong(&isNumber);
    if (isNumber && !processIsRunning(pid))
      QDir(parent + u'/' + name).removeRecursively();
  }
}

void build(const QString& folder, const QString& source, Meter& meter) {
  // The stages' shares of the whole follow the time each takes.
  meter.stage(0, 4, QStringLiteral("インスタンスを作成しています"));
  LocalEngine::createInstance(folder, SystemPassword, LocalEngine::Flushing::Off);
  {
    OraDatabase system(
        LocalEngine::connect(folder, QStringLiteral("SYSTEM"), SystemPassword, LocalEngine::Flushing::Off));
    for (const QString& sql : {QStringLiteral("CREATE USER %1 IDENTIFIED BY %2").arg(Owner, OwnerPassword),
                               QStringLiteral("GRANT DBA TO %1").arg(Owner),
                               QStringLiteral("CREATE USER %1 IDENTIFIED BY %2").arg(OldOwner, OldOwnerPassword),
                               QStringLiteral("GRANT CONNECT, RESOURCE TO %1").arg(OldOwner)}) {
      try {
        system.ExecuteSQL(sql);
      } catch (const OraError& e) {
        throw withContext(e, sql);
      }
    }
  }
  OraDatabase quil(LocalEngine::connect(folder, Owner, OwnerPassword, LocalEngine::Flushing::Off));
  meter.stage(4, 6, QStringLiteral("表を作成しています"));
  runScript(quil, source + u'/' + ScriptFile, meter);
  try {
    Generator(quil, meter).run();
  } catch (const OraError& e) {
    throw withContext(e, QStringLiteral("generating the demo rows"));
  }
}

} // namespace

QString sourceFolder(const DbEnvironment& env) {
  if (!env.demoFolder.isEmpty() || env.programFolder.isEmpty())
    return env.demoFolder;
  return env.programFolder + QStringLiteral("/demo");
}

bool needsBuild(const DbEnvironment& env) {
  return !LocalEngine::instanceExists(LocalEngine::folderFor(DemoInstance::Name, env));
}

void ensure(const QString& folder, const QString& source, const Progress& progress) {
  const QFileInfo target(folder);
  const QString parent = target.absolutePath();
  const QString prefix = QStringLiteral(".") + target.fileName() + QStringLiteral("-building-");
  removeAbandonedBuilds(parent, prefix);
  if (LocalEngine::instanceExists(folder))
    return;
  for (const QString& file : QStringList{ScriptFile} + NameMasterFiles)
    if (!QFileInfo::exists(source + u'/' + file))
      throw creationFailure(
          QStringLiteral("the demo file %1 is missing (set DBSWEEP_DEMO_DIR to the folder holding %2)")
              .arg(QDir::toNativeSeparators(source + u'/' + file), ScriptFile));

  if (!QDir().mkpath(parent))
    throw creationFailure(QStringLiteral("cannot create the folder %1").arg(QDir::toNativeSeparators(parent)));
  // Built beside its final place, so that the rename below is atomic and never crosses file
  // systems. The name carries this process's id: see removeAbandonedBuilds.
  QTemporaryDir work(parent + u'/' + prefix + QString::number(QCoreApplication::applicationPid()) +
                     QStringLiteral("-XXXXXX"));
  if (!work.isValid())
    throw creationFailure(
        QStringLiteral("cannot create a folder in %1: %2").arg(QDir::toNativeSeparators(parent), work.errorString()));
  Meter meter(progress);
  build(work.path(), source, meter);
  meter.stage(96, 100, QStringLiteral("ディスクに書き込んでいます"));
  LocalEngine::flushInstance(work.path());
  // Another process may have got there first: its instance is as good as ours, which then goes.
  work.setAutoRemove(!install(work.path(), folder));
  // The rename is on the disk once the folder holding it is; should it be lost, the next start
  // finds no instance and builds it again.
  flushToDisk(parent);
  meter.stage(100, 100, QStringLiteral("完了しました"));
}

bool install(const QString& built, const QString& folder) {
  std::error_code error;
  std::filesystem::rename(QFile::encodeName(built).toStdString(),
                          QFile::encodeName(QFileInfo(folder).absoluteFilePath()).toStdString(), error);
  if (!error)
    return true;
  if (LocalEngine::instanceExists(folder))
    return false;
  throw creationFailure(QStringLiteral("cannot move the new instance to %1: %2")
                            .arg(QDir::toNativeSeparators(folder), QString::fromStdString(error.message())));
}

void provideNameMasterFiles(const QString& source, const QString& settingsFolder) {
  if (settingsFolder.isEmpty() || !QDir().mkpath(settingsFolder))
    return;
  for (const QString& file : NameMasterFiles) {
    const QString target = settingsFolder + u'/' + file;
    if (!QFileInfo::exists(target))
      QFile::copy(source + u'/' + file, target);
  }
}

} // namespace DemoInstance
