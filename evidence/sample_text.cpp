#include "evidence/sample_text.h"

namespace evidence {

namespace {

struct name_and_mail
{
    const char *name;
    const char *mail;
};

// clang-format off
constexpr std::array<name_and_mail, 24> people = {{
    {"Anna Müller",            "anna.mueller"},
    {"Jörg Weiß",              "joerg.weiss"},
    {"Chloé Lefèvre",          "chloe.lefevre"},
    {"Łukasz Wójcik",          "lukasz.wojcik"},
    {"Nguyễn Thị Hương",       "huong.nguyen"},
    {"Νίκος Παπαδόπουλος",     "nikos"},
    {"Мария Иванова",          "m.ivanova"},
    {"محمد الأحمد",            "mohammed.ahmad"},
    {"דוד כהן",                "david.cohen"},
    {"अनिता शर्मा",             "anita.sharma"},
    {"สมชาย ใจดี",              "somchai"},
    {"山田 太郎",              "yamada.taro"},
    {"王小明",                 "wang.xiaoming"},
    {"김민수",                 "minsu.kim"},
    {"O'Brien, Seán",          "Sean.OBrien"},
    {"Ana \"Nena\" García",    "ana.garcia"},
    {"Zoë 🦊",                 "zoe"},
    {"Support Team",           "support"},
    {"İpek Yılmaz",            "ipek.yilmaz"},
    {"Þórunn Ævarsdóttir",     "thorunn"},
    {"",                       "no-reply"},
    {"Smith; John",            "john.smith"},
    {"გიორგი ბერიძე",          "giorgi"},
    {"Noël   de  Vries",       "NdV"},
}};

constexpr std::array<const char *, 8> domains = {
    "example.com", "example.org", "mail.example.net", "uni-beispiel.example", "Example.COM", "firma.example",
    "news.example.jp", "xn--bcher-kva.example"};

constexpr std::array<const char *, 10> frequent_subjects = {
    "Your weekly digest", "Ihre Rechnung", "Meeting notes", "会議のお知らせ", "Счёт на оплату", "🎉 Sale!",
    "Re: Angebot für Büromöbel", "Delivery Status Notification (Failure)", "Новости недели", "רשימת קניות"};

constexpr std::array<const char *, 8> subject_prefixes = {"", "", "", "Re: ", "Fwd: ", "AW: ", "RE: ", "回复: "};

constexpr std::array<const char *, 40> words = {
    "report", "Übersicht", "tomorrow", "naïve", "Straße", "budget", "été", "проект", "договор", "報告書", "明日",
    "견적서", "sözleşme", "Ελλάδα", "żółw", "מסמך", "تقرير", "the", "and", "of", "please", "find", "attached", "with",
    "regards", "we", "will", "meet", "at", "10:30", "50%", "\"quoted\"", "it's", "<tag>", "a&b", "👍", "🇩🇪", "café",
    "señor", "smörgåsbord"};
// clang-format on

} // namespace

sample_person person_of(uint64_t number)
{
    const name_and_mail &person = people[number % people.size()];
    const uint64_t namesake = number / people.size();
    const QString suffix = namesake == 0 ? QString() : QString::number(namesake);
    const char *domain = domains[(number * 7 + namesake) % domains.size()];
    return {QString::fromUtf8(person.name),
            QLatin1String(person.mail) + suffix + QLatin1Char('@') + QLatin1String(domain)};
}

QString subject_of(sample_random &random)
{
    if (random.one_in(3)) {
        return QString::fromUtf8(random.pick(frequent_subjects));
    }
    QString subject = QString::fromUtf8(random.pick(subject_prefixes));
    for (uint64_t count = 2 + random.below(5); count > 0; --count) {
        subject += QString::fromUtf8(random.pick(words)) + QLatin1Char(' ');
    }
    return subject + QString::number(random.below(1000000));
}

QString text_of(sample_random &random, int characters)
{
    QString text;
    do {
        text += QString::fromUtf8(random.pick(words));
        text += random.one_in(12) ? QLatin1String(".\n") : QLatin1String(" ");
    } while (text.size() < characters);
    return text.trimmed() + QLatin1Char('.');
}

QString uuid_of(sample_random &random)
{
    const QString hexadecimal = QStringLiteral("%1%2")
                                    .arg(random.bits(), 16, 16, QLatin1Char('0'))
                                    .arg(random.bits(), 16, 16, QLatin1Char('0'));
    QString uuid = hexadecimal.toUpper();
    for (const int position : {8, 13, 18, 23}) {
        uuid.insert(position, QLatin1Char('-'));
    }
    return uuid;
}

} // namespace evidence
