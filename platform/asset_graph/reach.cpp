#include "platform/asset_graph/reach.h"

#include <QtCore/QSet>

namespace QTSHARED {

std::vector<GRAPH_STEP> reach(QMap<QString, ASSET_FRAGMENT> const &fragments, QString const &id, REACH direction,
                              bool all)
{
    QHash<QString, QStringList> neighbours;
    for (auto fragment = fragments.begin(); fragment != fragments.end(); ++fragment) {
        for (ASSET_DEPENDENCY const &dependency : fragment->dependencies) {
            QString const needed = dependency.id.toLower();
            if (direction == REACH::NEEDS)
                neighbours[fragment.key()].append(needed);
            else
                neighbours[needed].append(fragment.key());
        }
    }

    std::vector<GRAPH_STEP> steps;
    QStringList front{id.toLower()};
    QSet<QString> seen(front.begin(), front.end());
    for (int distance = 1; !front.isEmpty() && (all || distance == 1); ++distance) {
        QStringList next;
        front.sort();
        for (QString const &from : qAsConst(front)) {
            QStringList others = neighbours.value(from);
            others.sort();
            others.removeDuplicates();
            for (QString const &other : qAsConst(others)) {
                steps.push_back(direction == REACH::NEEDS ? GRAPH_STEP{from, other, distance}
                                                          : GRAPH_STEP{other, from, distance});
                if (!seen.contains(other)) {
                    seen.insert(other);
                    next.append(other);
                }
            }
        }
        front = next;
    }
    return steps;
}

}  // namespace QTSHARED
