// Moving in time: the visitor that hands a step (an advance or a seek) to every part of a record that is VEX2_ANIMATED,
// in the order of the fields. Null parts are left out; what is not VEX2_ANIMATED, such as attributes, stays.
#pragma once

#include "scene/fields.h"

namespace VEX2_LOADER {

struct ADVANCE {
    float delta;
    template <class T>
    void operator()(T &part) const
    {
        part.advance(delta);
    }
};

struct SEEK {
    float time;
    template <class T>
    void operator()(T &part) const
    {
        part.seek(time);
    }
};

template <class T>
constexpr bool is_animated = std::is_base_of_v<VEX2_ANIMATED, T>;

template <class STEP, class T>
void move_item(STEP const &step, T &item)
{
    if constexpr (is_animated<T>)
        step(item);
}
template <class STEP, class T>
void move_item(STEP const &step, VEX2_OWNED<T> &item)
{
    if (item)
        step(*item);
}
template <class STEP, class T>
void move_item(STEP const &step, KN::DynamicArray<T> &items)
{
    if constexpr (is_animated<T>)
        for (T &item : items)
            step(item);
}
template <class STEP, class T>
void move_item(STEP const &step, KN::DynamicArray<VEX2_OWNED<T>> &items)
{
    for (VEX2_OWNED<T> &item : items)
        move_item(step, item);
}
template <class STEP, class T>
void move_item(STEP const &step, VEX2_LIST<T> &items)
{
    for (T *item : items)
        if (item)
            step(*item);
}

template <class T, class STEP>
class RECORD_MOVER : public FIELD_VISITOR<RECORD_MOVER<T, STEP>> {
public:
    RECORD_MOVER(T &record, STEP const &step_taken) : self(record), step(step_taken) {}

    template <class C, class M>
    void operator()(char const *, M C::*member, float = 0)
    {
        move_item(step, self.*member);
    }

private:
    T &self;
    STEP const &step;
};

template <class T, class STEP>
void move_record(T &record, STEP const &step)
{
    RECORD_MOVER<T, STEP> mover(record, step);
    T::fields(mover);
}

}  // namespace VEX2_LOADER
