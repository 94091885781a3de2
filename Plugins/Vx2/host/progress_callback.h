// The face that an action shows to a library which works for it: lines and progress.
#pragma once

#include <QtCore/QString>

class PROGRESS_CALLBACK {
public:
    virtual ~PROGRESS_CALLBACK() = default;
    // `level`: 0 information, 1 warning, 2 error.
    virtual void output_line(QString const &line, int level) = 0;
    // False if the run is to end early: long work then returns at its next convenience, as failed.
    virtual bool add_progress(int amount) = 0;
};
