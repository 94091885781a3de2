// tool_spec.xml and user_spec.xml: what binds the animations of a scene's actors. Attributes stand in the order of the
// XML library; readers go by name.
#pragma once

#include <QtXml/QDomDocument>

#include <vector>

struct ACTOR_SPEC {
    QString id;
    QString animation_file;  // beside the description
    QString skeleton;
};

// Where each actor's animation is, and of which skeleton. All stand at the origin, turned half round.
QDomDocument tool_spec(std::vector<ACTOR_SPEC> const &actors);
// What is to be shown for each actor: a stand-in for its class of skeleton, for people to change.
QDomDocument user_spec(std::vector<ACTOR_SPEC> const &actors);

// With indent 4, in the encoding that the document names. The file comes to stand whole; false if it cannot be written.
bool save_document(QDomDocument const &document, QString const &path);
