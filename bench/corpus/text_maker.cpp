#include "bench/corpus/text_maker.h"

#include "bench/corpus/vocabulary.h"

#include <algorithm>
#include <initializer_list>

using namespace Qt::Literals::StringLiterals;

namespace quillon::corpus
{

namespace
{

constexpr qsizetype NameBytes = 48;         // of code page 932: 24 full-width characters
constexpr qsizetype DefinitionBytes = 252;  // 126
constexpr qsizetype DocumentUnits = 31'700; // leaves room for the sentence that goes beyond it
constexpr int Compounds = 6'000;
constexpr quint32 FrequencyScale = 1U << 22U;
constexpr quint64 WordSeed = 20'251'231; // the vocabulary is the same in every corpus

template <class List> const auto& oneOf(Random& random, const List& list)
{
    return list[random.index(list.size())];
}

/// The parts in one text. Braces, unlike operands of a plus, are evaluated from left to right by every compiler.
QString joined(std::initializer_list<QString> parts)
{
    QString text;
    for (const QString& part : parts)
        text += part;
    return text;
}

QString digits(Random& random, int first, int last)
{
    return QString::number(random.between(first, last));
}

qsizetype sumOfBytes(QStringView text, qsizetype (*bytesOf)(char16_t))
{
    qsizetype bytes = 0;
    for (const QChar character : text)
        bytes += bytesOf(character.unicode());
    return bytes;
}

} // namespace

qsizetype bytes932(QStringView text)
{
    return sumOfBytes(text, [](char16_t unit) -> qsizetype {
        return unit < 0x80 || (unit >= 0xFF61 && unit <= 0xFF9F) ? 1 : 2;
    });
}

qsizetype bytesUtf8(QStringView text)
{
    // No text of the corpus has a character beyond the basic plane.
    return sumOfBytes(text, [](char16_t unit) -> qsizetype {
        if (unit < 0x80)
            return 1;
        return unit < 0x800 ? 2 : 3;
    });
}

TextMaker::TextMaker()
{
    const Vocabulary& words = vocabulary();
    for (const auto* list : {&words.kanji, &words.katakana, &words.hiragana, &words.latin})
        m_nouns.insert(m_nouns.end(), list->begin(), list->end());
    Random random(WordSeed, 0);
    for (const QString& word : words.katakana) {
        if (random.chance(15))
            m_nouns.push_back(halfWidthKatakana(word));
    }
    for (const QString& word : words.latin) {
        if (random.chance(50))
            m_nouns.push_back(fullWidthLatin(word));
    }
    for (std::size_t i = m_nouns.size() - 1; i > 0; --i)
        std::swap(m_nouns[i], m_nouns[random.index(i + 1)]);
    // Simple words come first, compounds of them make the long tail.
    for (int i = 0; i < Compounds; ++i)
        m_nouns.push_back(term(random));

    // The frequency of a word falls with its rank (Zipf).
    quint32 sum = 0;
    for (std::size_t rank = 0; rank < m_nouns.size(); ++rank) {
        sum += FrequencyScale / static_cast<quint32>(rank + 3);
        m_frequency.push_back(sum);
    }
}

const QString& TextMaker::noun(Random& random) const
{
    const quint32 wanted = random.below(m_frequency.back());
    const auto rank = std::upper_bound(m_frequency.begin(), m_frequency.end(), wanted) - m_frequency.begin();
    return m_nouns[static_cast<std::size_t>(rank)];
}

QString TextMaker::term(Random& random)
{
    const Vocabulary& words = vocabulary();
    const auto simple = [&]() -> const QString& {
        return random.chance(70) ? oneOf(random, words.kanji) : oneOf(random, words.katakana);
    };
    const quint32 form = random.below(100);
    if (form < 40)
        return joined({simple(), oneOf(random, words.kanji)});
    if (form < 58)
        return joined({simple(), oneOf(random, words.suffixes)});
    if (form < 66)
        return joined({oneOf(random, words.prefixes), oneOf(random, words.kanji)});
    if (form < 74)
        return joined({simple(), oneOf(random, words.kanji), oneOf(random, words.suffixes)});
    if (form < 80)
        return joined({oneOf(random, words.latin), oneOf(random, words.kanji)});
    if (form < 84)
        return joined({oneOf(random, words.katakana), u"・"_s, oneOf(random, words.katakana)});
    if (form < 92)
        return joined({simple(), u"の"_s, simple()});
    return joined({oneOf(random, words.katakana), oneOf(random, words.verbs)});
}

QString TextMaker::definitionName(Random& random) const
{
    const Vocabulary& words = vocabulary();
    for (;;) {
        QString name;
        const quint32 form = random.below(100);
        if (form < 12) {
            name = oneOf(random, m_nouns);
        } else if (form < 60) {
            name = term(random);
        } else if (form < 70) {
            name = joined({u"第"_s, digits(random, 1, 30), u"次"_s, term(random)});
        } else if (form < 78) {
            name = joined({term(random), u"（"_s, oneOf(random, words.latin), u"）"_s});
        } else if (form < 84) {
            name = joined({term(random), u" "_s, digits(random, 1, 999)});
        } else if (form < 88) {
            name = joined({halfWidthKatakana(oneOf(random, words.katakana)), oneOf(random, words.kanji)});
        } else if (form < 92) {
            name = joined({fullWidthLatin(oneOf(random, words.latin)),
                           fullWidthLatin(digits(random, 1, 9999)), oneOf(random, words.suffixes)});
        } else if (form < 96) {
            name = joined({oneOf(random, words.places), u"の"_s, term(random)});
        } else {
            name = joined({term(random), u"と"_s, term(random)});
        }
        if (bytes932(name) <= NameBytes)
            return name;
    }
}

QString TextMaker::documentName(Random& random)
{
    const Vocabulary& words = vocabulary();
    static const std::vector<QString> Kinds = {
        u"について"_s, u"に関する資料"_s, u"講義録"_s, u"の手引き"_s, u"議事録"_s, u"要約"_s,
        u" 第%1章"_s,  u"（第%1版）"_s,   u"ノート"_s, u"報告"_s,     u"メモ"_s,   u"の歴史と展望 (%1)"_s};
    for (;;) {
        QString name;
        if (random.chance(20))
            name = oneOf(random, words.places) + u'の';
        name += term(random);
        name += oneOf(random, Kinds);
        name.replace(u"%1"_s, digits(random, 1, 24));
        if (bytes932(name) <= NameBytes)
            return name;
    }
}

QString TextMaker::fileName(Random& random)
{
    const Vocabulary& words = vocabulary();
    for (;;) {
        QString name;
        switch (random.below(5)) {
        case 0:
            name = joined({term(random), u"_"_s, digits(random, 1996, 2025), u"年度"_s});
            break;
        case 1:
            name = joined({oneOf(random, words.kanji), u"-"_s, digits(random, 1, 400)});
            break;
        case 2:
            name = joined({halfWidthKatakana(oneOf(random, words.katakana)), oneOf(random, words.kanji)});
            break;
        case 3:
            name = joined({oneOf(random, words.latin).toLower(), digits(random, 1, 9999)});
            break;
        default:
            name = term(random);
            break;
        }
        name.remove(u'&');
        name += oneOf(random, words.extensions);
        if (bytes932(name) <= NameBytes)
            return name;
    }
}

QString TextMaker::categoryName(Random& random)
{
    const Vocabulary& words = vocabulary();
    for (;;) {
        QString name = random.chance(35) ? oneOf(random, words.kanji) : term(random);
        if (random.chance(10))
            name += u"全般"_s;
        if (bytes932(name) <= NameBytes)
            return name;
    }
}

void TextMaker::appendPattern(Random& random, const QString& pattern, QString& text) const
{
    const Vocabulary& words = vocabulary();
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != u'%') {
            text += pattern[i];
            continue;
        }
        switch (pattern[++i].unicode()) {
        case u'n':
            text += noun(random);
            break;
        case u'v':
            text += oneOf(random, words.verbs);
            break;
        case u'a':
            text += oneOf(random, words.adjectives);
            break;
        case u'p':
            text += oneOf(random, words.places);
            break;
        case u'l':
            text += oneOf(random, words.latin);
            break;
        case u'd': {
            const QString number = QString::number(random.between(1, random.chance(70) ? 12 : 900));
            text += random.chance(30) ? fullWidthLatin(number) : number;
            break;
        }
        case u'y':
            if (random.chance(40))
                text += u"平成%1年"_s.arg(random.between(2, 30));
            else
                text += u"%1年"_s.arg(random.between(1603, 2024));
            break;
        default:
            text += pattern[i];
            break;
        }
    }
}

QString TextMaker::definition(Random& random) const
{
    const Vocabulary& words = vocabulary();
    QString text;
    appendPattern(random, oneOf(random, words.definitions), text);
    // Most definitions are one short sentence, some take all the room there is.
    const quint32 form = random.below(100);
    int further = 0;
    if (form >= 45)
        further = form < 85 ? 1 : random.between(2, 6);
    for (; further > 0; --further) {
        const qsizetype end = text.size();
        if (random.chance(25))
            text += oneOf(random, words.connectors);
        appendPattern(random, oneOf(random, words.sentences), text);
        if (bytes932(text) > DefinitionBytes) {
            text.truncate(end);
            break;
        }
    }
    return text;
}

QString TextMaker::document(Random& random, const QString& name, qint64 bytes) const
{
    const Vocabulary& words = vocabulary();
    constexpr qint64 HalfASentence = 55;
    QString text;
    qsizetype counted = 0;
    qint64 made = 0;
    const auto isFull = [&] {
        made += bytesUtf8(QStringView(text).mid(counted));
        counted = text.size();
        return made + HalfASentence >= bytes || text.size() >= DocumentUnits;
    };
    if (isFull())
        return text;
    text += name + u"\r\n\r\n"_s;
    while (!isFull()) {
        const quint32 form = random.below(100);
        if (form < 8)
            text += u"\r\n■ "_s + term(random) + u"\r\n"_s;
        const bool items = form >= 92;
        text += items ? u"・"_s : u"　"_s;
        for (int left = random.between(2, 9); left > 0 && !isFull(); --left) {
            if (!items && random.chance(30))
                text += oneOf(random, words.connectors);
            appendPattern(random, oneOf(random, words.sentences), text);
            if (items && left > 1)
                text += u"\r\n・"_s;
        }
        text += u"\r\n"_s;
    }
    return text;
}

} // namespace quillon::corpus
