// The dump is a visitor of the field descriptions, like reading and writing; the text is streamed, so that a scene of
// any size takes one small buffer.
#include "scene/dump.h"

#include "scene/families.h"
#include "scene/fields.h"
#include "scene/scene.h"

#include <charconv>
#include <cmath>

namespace VEX2_LOADER {

namespace {

class JSON_STREAM {
public:
    explicit JSON_STREAM(VEX2_DUMP_SINK &target) : sink(target) {}

    void put(std::string_view piece)
    {
        pending += piece;
        if (pending.size() >= large_piece)
            flush();
    }
    // A comma, unless the object or array has just begun.
    void separate()
    {
        if (!pending.empty() ? pending.back() != '{' && pending.back() != '[' : !just_begun)
            put(",");
    }
    bool flush()
    {
        if (!pending.empty()) {
            just_begun = pending.back() == '{' || pending.back() == '[';
            good = good && sink.write(pending);
            pending.clear();
        }
        return good;
    }

    void integer(std::int64_t value)
    {
        char digits[24];
        put({digits, std::size_t(std::to_chars(digits, std::end(digits), value).ptr - digits)});
    }
    void number(float value)
    {
        if (std::isnan(value))
            return put("\"nan\"");
        if (std::isinf(value))
            return put(value < 0 ? "\"-inf\"" : "\"inf\"");
        constexpr int digits_that_read_back = 9;
        char digits[32];
        auto const end =
            std::to_chars(digits, std::end(digits), value, std::chars_format::general, digits_that_read_back).ptr;
        put({digits, std::size_t(end - digits)});
    }
    void text(KN::UniString const &units)
    {
        put("\"");
        for (std::size_t i = 0; i < units.size(); ++i) {
            char16_t const unit = units[i];
            bool const high = unit >= 0xd800 && unit < 0xdc00;
            bool const pair = high && i + 1 < units.size() && units[i + 1] >= 0xdc00 && units[i + 1] < 0xe000;
            if (pair) {
                put(KN::to_utf8({&units[i], 2}));
                ++i;
            } else if (unit < 0x20 || (unit >= 0xd800 && unit < 0xe000)) {
                escape(unit);
            } else if (unit == u'"' || unit == u'\\') {
                char const escaped[2] = {'\\', char(unit)};
                put({escaped, 2});
            } else if (unit < 0x80) {
                char const byte = char(unit);
                put({&byte, 1});
            } else {
                put(KN::to_utf8({&unit, 1}));
            }
        }
        put("\"");
    }

    static constexpr char hex_digits[] = "0123456789abcdef";

private:
    static constexpr std::size_t large_piece = 1 << 16;

    void escape(char16_t unit)
    {
        char const escaped[6] = {'\\',
                                 'u',
                                 hex_digits[unit >> 12],
                                 hex_digits[unit >> 8 & 15],
                                 hex_digits[unit >> 4 & 15],
                                 hex_digits[unit & 15]};
        put({escaped, sizeof escaped});
    }

    VEX2_DUMP_SINK &sink;
    KN::String pending;
    bool just_begun = true;
    bool good = true;
};

void dump_floats(JSON_STREAM &json, float const *values, std::size_t count)
{
    json.put("[");
    for (std::size_t i = 0; i < count; ++i) {
        json.separate();
        json.number(values[i]);
    }
    json.put("]");
}

template <class T>
void dump_item(JSON_STREAM &json, T const &item);

template <class T>
void dump_record(JSON_STREAM &json, T const &record);

template <class T>
class RECORD_DUMPER : public FIELD_VISITOR<RECORD_DUMPER<T>> {
public:
    RECORD_DUMPER(JSON_STREAM &stream, T const &record, bool with_names) : json(stream), self(record), names(with_names)
    {}

    template <class C, class M>
    void operator()(char const *name, M C::*member, float = 0)
    {
        label(name);
        dump_item(json, self.*member);
    }
    template <class C, class M>
    void as_array(char const *name, M C::*member)
    {
        label(name);
        json.put("[");
        RECORD_DUMPER<M> elements(json, self.*member, false);
        M::fields(elements);
        json.put("]");
    }
    template <class C, class M>
    void computed(char const *name, M C::*member)
    {
        (*this)(name, member);
    }
    template <class C>
    void stored_matrix(char const *name, VEX2_MATRIX C::*member)
    {
        label(name);
        json.put("[");
        for (auto const &row : (self.*member).m)
            for (float value : row) {
                json.separate();
                json.number(value);
            }
        json.put("]");
    }
    // As a key of a channel a frame is its six numbers.
    void operator()(char const *name,
                    KN::DynamicArray<VEX2_TANGENT_FRAME> VEX2_KEYED_CHANNEL<VEX2_TANGENT_FRAME>::*keys)
    {
        label(name);
        json.put("[");
        for (VEX2_TANGENT_FRAME const &frame : self.*keys) {
            json.separate();
            dump_floats(json, &frame.binormal.x, sizeof frame / sizeof(float));
        }
        json.put("]");
    }
    // The frames of an influence stand with its vertex.
    void operator()(char const *name, KN::DynamicArray<VEX2_INFLUENCE> VEX2_WEIGHTED_VERTEX::*member)
    {
        label(name);
        VEX2_WEIGHTED_VERTEX const &vertex = self;
        std::uint32_t const frame_count = vertex.has_local_frames() ? vertex.frames.count : 0;
        VEX2_TANGENT_FRAME const *frame = vertex.local_frames.data;
        json.put("[");
        for (VEX2_INFLUENCE const &influence : vertex.*member) {
            json.separate();
            json.put("{");
            RECORD_DUMPER<VEX2_INFLUENCE> members(json, influence, true);
            VEX2_INFLUENCE::fields(members);
            json.put(",\"frames\":[");
            for (std::uint32_t k = 0; k < frame_count; ++k) {
                json.separate();
                dump_item(json, *frame++);
            }
            json.put("]}");
        }
        json.put("]");
    }

private:
    void label(char const *name)
    {
        json.separate();
        if (names) {
            json.put("\"");
            json.put(name);
            json.put("\":");
        }
    }

    JSON_STREAM &json;
    T const &self;
    bool names;
};

template <class T>
void dump_fields(JSON_STREAM &json, T const &record)
{
    RECORD_DUMPER<T> dumper(json, record, true);
    T::fields(dumper);
}

template <class T>
void dump_record(JSON_STREAM &json, T const &record)
{
    if constexpr (VEX2_HAS_SUBTYPE<T>) {
        with_own_class(record, [&]<class CLASS>(CLASS const &whole) {
            json.put("{\"subtype\":");
            json.integer(whole.subtype());
            if constexpr (std::is_base_of_v<VEX2_CAMERA_EFFECT, CLASS>) {
                json.put(",\"channels\":[");
                RECORD_DUMPER<CLASS> channels(json, whole, false);
                CLASS::fields(channels);
                json.put("]");
            } else {
                dump_fields(json, whole);
            }
            json.put("}");
        });
    } else {
        json.put("{");
        dump_fields(json, record);
        json.put("}");
    }
}

template <>
void dump_record(JSON_STREAM &json, VEX2_SCENE_REFERENCE const &reference)
{
    json.put("{\"path\":");
    json.text(reference.path);
    json.put(",\"scene\":");
    if (reference.scene)
        dump_record(json, *reference.scene);
    else
        json.put("null");
    json.put("}");
}

template <class T>
void dump_pointer(JSON_STREAM &json, T const *record)
{
    if (record)
        dump_record(json, *record);
    else
        json.put("null");
}

template <class T>
void dump_item(JSON_STREAM &json, T const &item)
{
    if constexpr (std::is_same_v<T, std::uint8_t[8]>) {
        json.put("\"");
        for (std::uint8_t byte : item) {
            char const digits[2] = {JSON_STREAM::hex_digits[byte >> 4], JSON_STREAM::hex_digits[byte & 15]};
            json.put({digits, 2});
        }
        json.put("\"");
    } else if constexpr (std::is_same_v<T, bool>) {
        json.put(item ? "true" : "false");
    } else if constexpr (std::is_same_v<T, float>) {
        json.number(item);
    } else if constexpr (std::is_integral_v<T>) {
        json.integer(item);
    } else if constexpr (std::is_same_v<T, KN::UniString>) {
        json.text(item);
    } else if constexpr (std::is_same_v<T, VEX2_TANGENT_FRAME>) {
        json.put("{\"binormal\":");
        dump_item(json, item.binormal);
        json.put(",\"tangent\":");
        dump_item(json, item.tangent);
        json.put("}");
    } else if constexpr (std::is_same_v<T, VEX2_TRIANGLE>) {
        dump_item(json, item.vertices);
    } else if constexpr (RECORD<T>) {
        dump_record(json, item);
    } else if constexpr (std::is_array_v<T> || requires { item.capacity; }) {
        json.put("[");
        for (auto const &element : item) {
            json.separate();
            dump_item(json, element);
        }
        json.put("]");
    } else if constexpr (std::is_pointer_v<T>) {
        dump_pointer(json, item);
    } else if constexpr (stored_as_is<T>) {
        dump_floats(json, reinterpret_cast<float const *>(&item), sizeof item / sizeof(float));
    } else {
        dump_pointer(json, item.get());
    }
}

}  // namespace

bool dump_scene(VEX2 const &scene, VEX2_DUMP_SINK &sink)
{
    JSON_STREAM json(sink);
    dump_record(json, scene);
    json.put("\n");
    return json.flush();
}

KN::String dump_scene(VEX2 const &scene)
{
    struct TEXT_SINK final : VEX2_DUMP_SINK {
        KN::String text;
        bool write(std::string_view piece) override
        {
            text += piece;
            return true;
        }
    } sink;
    dump_scene(scene, sink);
    return sink.text;
}

}  // namespace VEX2_LOADER
