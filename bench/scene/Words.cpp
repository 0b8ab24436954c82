#include "Words.h"

#include <QStringList>

#include <array>

namespace zivra::bench {

namespace {

using Choices = std::array<const char *, 12>;

constexpr Choices kSubjects{"The old ferry",     "A narrow path",      "Her second letter",
                            "The morning train", "Nobody in town",     "The orchard",
                            "A small lantern",   "Their youngest son", "The harbour master",
                            "An empty notebook", "The north wind",     "Every third house"};
constexpr Choices kVerbs{"waited for",      "belonged to",    "carried",       "looked across",
                         "remembered",      "turned towards", "was built for", "followed",
                         "had never shown", "leaned against", "opened",        "came back to"};
constexpr Choices kObjects{
    "the river in spring",         "a row of grey barns",    "the market square",
    "what was left of the bridge", "a box of 144 nails",     "the long way home",
    "three quiet summers",         "the edge of the forest", "a kettle, two cups and a map",
    "the lighthouse keeper",       "(almost) everyone",      "page 37 of the ledger"};
constexpr Choices kEndings{
    "before the snow.", "without a word.", "and stayed until noon.", "as it always did.",
    "for 25 years.",    "in the evening.", "and it was enough.",     "while the tide went out.",
    "at 6:40.",         "twice a week.",   "against all advice.",    "and nothing changed."};

QString pick(const Choices &choices, std::mt19937 &random)
{
    return QString::fromLatin1(choices.at(random() % choices.size()));
}

} // namespace

QString Words::sentence()
{
    const QString subject = pick(kSubjects, m_random);
    const QString verb = pick(kVerbs, m_random);
    const QString object = pick(kObjects, m_random);
    return QStringList{subject, verb, object, pick(kEndings, m_random)}.join(QLatin1Char(' '));
}

QString Words::paragraph(int sentences)
{
    QStringList all;
    for (int index = 0; index < sentences; ++index) {
        all.append(sentence());
    }
    return all.join(QLatin1Char(' '));
}

} // namespace zivra::bench
