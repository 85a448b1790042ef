#include "Platform/Foundation/Locale.h"

#include <QMap>
#include <QRegularExpression>
#include <QStringList>
#include <algorithm>

namespace NS::Locale {

namespace {

/// The locale that the environment sets for messages; empty when it sets none.
QString localeInForce() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const auto value = qgetenv(name); !value.isEmpty()) {
            return QString::fromLatin1(value);
        }
    }
    return {};
}

/// The BCP 47 tag (https://www.rfc-editor.org/info/bcp47) of a locale name like "sr_RS.UTF-8@latin"; empty when the
/// name holds no language.
std::string tagOfLocale(const QString& locale) {
    static const QRegularExpression form(
        QStringLiteral(R"(\A([a-z]{2,3})(?:_([a-z]{2}|[0-9]{3}))?(?:\.[^@]*)?(?:@(.*))?\z)"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    static const QMap<QString, QString> scripts = {
        {"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}, {"arabic", "Arab"}};
    const auto match = form.match(locale);
    const QString modifier = match.captured(3);
    QStringList subtags = {match.captured(1).toLower(), scripts.value(modifier), match.captured(2).toUpper(),
                           modifier == QStringLiteral("valencia") ? modifier : QString()};
    subtags.removeAll(QString());
    return subtags.join('-').toStdString();
}

} // namespace

// Not QLocale::uiLanguages() (Qt 6.4): it reads the environment once, heeds LANGUAGE in the locale C too, and adds
// languages that nobody asked for, such as pt-Latn-BR and pt.
std::vector<std::string> preferredLanguages() {
    const QString locale = localeInForce();
    QStringList locales;
    if (locale != "C" && locale != "POSIX") { // gettext ignores LANGUAGE in these two
        locales = QString::fromLatin1(qgetenv("LANGUAGE")).split(':');
    }
    locales.append(locale);
    std::vector<std::string> tags;
    for (const auto& name : locales) {
        const auto tag = tagOfLocale(name);
        if (!tag.empty() && std::ranges::find(tags, tag) == tags.end()) {
            tags.push_back(tag);
        }
    }
    return tags;
}

} // namespace NS::Locale
