#include "platform/build_host/did_you_mean.h"

#include <algorithm>
#include <numeric>
#include <vector>

// Levenshtein distance, case folded: the number of letters to insert, remove or replace.
static int distance(QString const &a, QString const &b)
{
    std::vector<int> row(std::size_t(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0]++;
        for (std::size_t j = 1; j < row.size(); ++j) {
            int const replaced = diagonal + (a[i].toCaseFolded() != b[int(j) - 1].toCaseFolded());
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

QString did_you_mean(QString const &misspelt, QStringList const &known)
{
    if (misspelt.size() > 100)
        return {};
    QString nearest;
    int least = misspelt.size() / 3 + 2;  // further away it is another word
    for (QString const &name : known) {
        int const far = distance(misspelt, name);
        if (far < least) {
            least = far;
            nearest = name;
        }
    }
    return nearest.isEmpty() ? QString() : QStringLiteral("; did you mean '%1'?").arg(nearest);
}
