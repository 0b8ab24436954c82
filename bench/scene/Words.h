#pragma once

#include <QString>

#include <random>

namespace zivra::bench {

/// Makes up sentences; the same ones for the same seed.
class Words {
public:
    explicit Words(unsigned seed) : m_random(seed) {}

    QString sentence();
    QString paragraph(int sentences);

private:
    std::mt19937 m_random;
};

} // namespace zivra::bench
