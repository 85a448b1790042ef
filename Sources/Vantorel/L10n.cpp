#include "L10n.h"

#include "FatalError.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Prefs.h"
#include "Product.h"

#include <algorithm>
#include <array>
#include <cctype>

using namespace std::string_literals;

namespace L10n {

namespace {

using Row = std::pair<std::string_view, Text>;

const std::string& autoUpdateHintEnglish() {
    static const std::string text = "Checks "s + Product::updateHost + " daily and installs new versions on its own.";
    return text;
}

const std::string& autoUpdateHintPortuguese() {
    static const std::string text =
        "Verifica o "s + Product::updateHost + " diariamente e instala as novidades sozinho.";
    return text;
}

std::array<Row, 19> rows() {
    return {{
        {"menu.statusOn", {"Vantorel is on", "Vantorel ativado"}},
        {"menu.statusOff", {"Vantorel is off", "Vantorel desativado"}},
        {"menu.turnOn", {"Turn On", "Ativar"}},
        {"menu.turnOff", {"Turn Off", "Desativar"}},
        {"menu.settings", {"Settings…", "Ajustes…"}},
        {"menu.quit", {"Quit Vantorel", "Sair do Vantorel"}},
        {"welcome.title", {"Welcome to Vantorel", "Bem-vindo ao Vantorel"}},
        {"welcome.subtitle", {"Choose your language", "Escolha seu idioma"}},
        {"welcome.continue", {"Continue", "Continuar"}},
        {"welcome.hint",
         {"One click on the cup keeps your Mac awake.", "Um clique na xícara mantém seu Mac acordado."}},
        {"settings.title", {"Vantorel Settings", "Ajustes do Vantorel"}},
        {"settings.launchAtLogin", {"Launch at login", "Iniciar com o Mac"}},
        {"settings.loginHint",
         {"Move Vantorel to the Applications folder to enable this.",
          "Mova o Vantorel para a pasta Aplicativos para ativar isto."}},
        {"settings.schedule", {"Automatic schedule", "Agenda automática"}},
        {"settings.scheduleOn", {"Turn on at", "Ativar às"}},
        {"settings.scheduleOff", {"Turn off at", "Desativar às"}},
        {"settings.autoUpdate", {"Update automatically", "Atualizar automaticamente"}},
        {"settings.autoUpdateHint", {autoUpdateHintEnglish(), autoUpdateHintPortuguese()}},
        {"settings.language", {"Language", "Idioma"}},
    }};
}

} // namespace

const char* rawValue(Language language) {
    return language == Language::ptBR ? "pt-BR" : "en";
}

const char* label(Language language) {
    return language == Language::ptBR ? "Português (Brasil)" : "English";
}

const std::string& languageDidChange() {
    static const std::string name = Product::bundleIdentifier + ".languageDidChange"s;
    return name;
}

Table makeTable(std::span<const Row> rows) {
    Table table;
    table.reserve(rows.size());
    for (const auto& [key, text] : rows) {
        if (!table.emplace(key, text).second) {
            fatalError("the table of texts has a key twice");
        }
    }
    return table;
}

const Table& table() {
    static const Table table = makeTable(rows());
    return table;
}

std::string t(std::string_view key) {
    const auto entry = table().find(key);
    if (entry == table().end()) {
        return std::string(key);
    }
    return std::string(current() == Language::ptBR ? entry->second.pt : entry->second.en);
}

Language detectSystemLanguage(const std::vector<std::string>& languages) {
    if (languages.empty()) {
        return Language::en;
    }
    std::string first = languages.front();
    std::transform(first.begin(), first.end(), first.begin(), [](unsigned char c) { return std::tolower(c); });
    return first.starts_with("pt") ? Language::ptBR : Language::en;
}

Language current() {
    const auto stored = Prefs::d().stringForKey(Prefs::appLanguage);
    for (const Language language : {Language::en, Language::ptBR}) {
        if (stored == rawValue(language)) {
            return language;
        }
    }
    return detectSystemLanguage();
}

void setCurrent(Language language) {
    Prefs::d().setObject(NS::PropertyListValue(rawValue(language)), Prefs::appLanguage);
    NS::NotificationCenter::defaultCenter().postNotificationName(languageDidChange());
}

} // namespace L10n
