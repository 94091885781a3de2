#include "support/camera/camera.h"

#include "support/camera/view_volume.h"

#include <cfloat>
#include <cmath>

namespace SUPPORT {

static constexpr float pi = 3.14159265f;
static constexpr float shortest = FLT_EPSILON;  // 1.1920929e-7: below it a vector has no direction

CAMERA::CAMERA(float given_to_keep) : given(given_to_keep)
{
    CAMERA::set_field_of_view(field_of_view_angle);
    CAMERA::update_axes();
}

VECTOR3 CAMERA::eye() const { return eye_point; }
VECTOR3 CAMERA::target() const { return target_point; }
VECTOR3 CAMERA::up() const { return up_axis; }
VECTOR3 CAMERA::forward() const { return forward_axis; }
float CAMERA::near() const { return near_distance; }
float CAMERA::far() const { return far_distance; }
float CAMERA::view_height() const { return orthographic_height; }
float CAMERA::min_pitch() const { return pitch_limits[0]; }
float CAMERA::max_pitch() const { return pitch_limits[1]; }
float CAMERA::roll() const { return roll_angle; }
float CAMERA::first_distance() const { return distances[0]; }
float CAMERA::second_distance() const { return distances[1]; }
float CAMERA::given_value() const { return given; }
float CAMERA::off_centre_bottom() const { return bottom; }
float CAMERA::off_centre_top() const { return top; }
float CAMERA::off_centre_left() const { return left; }
float CAMERA::off_centre_right() const { return right; }
float CAMERA::tan_scale() const { return scale_of_tan; }

float CAMERA::field_of_view() const
{
    return field_of_view_override.flag ? field_of_view_override.value : field_of_view_angle;
}

float CAMERA::aspect() const { return aspect_override.flag ? aspect_override.value : aspect_ratio; }

void CAMERA::set_near(float value) { near_distance = value; }
void CAMERA::set_far(float value) { far_distance = value; }
void CAMERA::set_view_height(float value) { orthographic_height = value; }
void CAMERA::set_roll(float value) { roll_angle = value; }
void CAMERA::set_first_distance(float value) { distances[0] = value; }
void CAMERA::set_second_distance(float value) { distances[1] = value; }

void CAMERA::set_aspect(float value)
{
    aspect_ratio = value;
    scale_of_tan = 2 * std::tan(field_of_view_angle / 2);
}

void CAMERA::set_field_of_view(float value)
{
    field_of_view_angle = value;
    scale_of_tan = 2 * std::tan(field_of_view_angle / 2);
}

void CAMERA::set_pitch_limits(float min, float max)
{
    pitch_limits[0] = min;
    pitch_limits[1] = max;
}

void CAMERA::set_off_centre(bool flag, float new_left, float new_right, float new_top, float new_bottom)
{
    off_centre = flag;
    bottom = new_bottom;
    top = new_top;
    left = new_left;
    right = new_right;
}

void CAMERA::set_fixed_projection(bool flag, MATRIX44 const &view_to_use, MATRIX44 const &projection_to_use)
{
    fixed_projection = flag;
    view_matrix = view_to_use;
    projection_matrix = projection_to_use;
}

void CAMERA::set_fixed_view(bool flag, MATRIX44 const &view_to_use)
{
    fixed_view = flag;
    view_matrix = view_to_use;
}

void CAMERA::update_axes()
{
    VECTOR3 const sight = target_point - eye_point;
    if (length(sight) >= shortest) {
        forward_axis = normalised(sight);
    } else {
        forward_axis = {0, 0, 1};
        target_point = eye_point + forward_axis;
    }

    flat_forward_axis = {forward_axis.x, 0, forward_axis.z};
    if (length(flat_forward_axis) >= shortest) {
        if (std::abs(up_axis.y) >= shortest)
            flat_forward_axis = normalised(flat_forward_axis);
        else
            up_axis = {0, 1, 0};  // the flat direction keeps its length until the next change
    } else {
        flat_forward_axis = {0, 0, 0};
        up_axis = {0, 0, -1};
    }
    flat_right_axis = {flat_forward_axis.z, 0, -flat_forward_axis.x};
}

void CAMERA::translate(VECTOR3 const &vector)
{
    eye_point += vector;
    target_point += vector;
    update_axes();
}

void CAMERA::move(VECTOR3 const &vector)
{
    if (!orthographic) {
        translate(vector);
        return;
    }
    orthographic_height = std::fmax(orthographic_height + vector.y, 0.001f);
    translate({vector.x, 0, vector.z});
}

void CAMERA::move_forward(float distance) { move(flat_forward_axis * distance); }
void CAMERA::move_back(float distance) { move(flat_forward_axis * -distance); }
void CAMERA::move_right(float distance) { move(flat_right_axis * distance); }
void CAMERA::move_left(float distance) { move(flat_right_axis * -distance); }
void CAMERA::move_up(float distance) { translate(up_axis * distance); }
void CAMERA::move_down(float distance) { translate(up_axis * -distance); }
void CAMERA::dolly(float distance) { CAMERA::translate(forward_axis * distance); }

void CAMERA::set_position_keeping_view(VECTOR3 const &point)
{
    target_point += point - eye_point;
    eye_point = point;
    update_axes();
}

void CAMERA::set_eye(VECTOR3 const &point)
{
    eye_point = constrained(point);
    update_axes();
}

void CAMERA::set_target(VECTOR3 const &point)
{
    target_point = constrained(point);
    update_axes();
}

void CAMERA::set_up(VECTOR3 const &vector)
{
    up_axis = vector;
    update_axes();
}

void CAMERA::set_target_and_eye(VECTOR3 const &new_target, VECTOR3 const &new_eye)
{
    set_target(new_target);
    set_eye(new_eye);
}

void CAMERA::set_from_matrix(MATRIX44 const &m)
{
    eye_point = {m[0][3], m[1][3], m[2][3]};
    target_point = eye_point + VECTOR3{m[0][2], m[1][2], m[2][2]};
    update_axes();
    up_axis = {m[0][1], m[1][1], m[2][1]};
}

VECTOR3 CAMERA::constrained(VECTOR3 const &point) const { return point; }
VECTOR3 CAMERA::to_camera_space(VECTOR3 const &point) const { return point; }
VECTOR3 CAMERA::to_world_space(VECTOR3 const &point) const { return point; }

// Into -pi to pi.
static float wrapped(float angle) { return angle - 2 * pi * std::round(angle / (2 * pi)); }

static VECTOR3 from_spherical(float yaw, float pitch, float length)
{
    return VECTOR3{std::sin(yaw) * std::cos(pitch), std::sin(pitch), std::cos(yaw) * std::cos(pitch)} * length;
}

CAMERA::SPHERICAL CAMERA::offset() const
{
    VECTOR3 const d = to_camera_space(target_point) - to_camera_space(eye_point);
    float const l = length(d);
    return {std::atan2(d.x, d.z), std::asin(d.y / l), l};
}

void CAMERA::offset_after_yaw(VECTOR3 &out, float angle) const
{
    SPHERICAL const now = offset();
    out = from_spherical(wrapped(now.yaw + angle), now.pitch, now.length);
}

void CAMERA::offset_after_pitch(VECTOR3 &out, float angle) const
{
    SPHERICAL const now = offset();
    float const pitch = std::fmin(std::fmax(wrapped(now.pitch + angle), pitch_limits[0]), pitch_limits[1]);
    out = from_spherical(now.yaw, pitch, now.length);
}

void CAMERA::turn_yaw(float angle)
{
    VECTOR3 turned;
    offset_after_yaw(turned, angle);
    set_target(to_world_space(to_camera_space(eye_point) + turned));
}

void CAMERA::orbit_yaw(float angle)
{
    VECTOR3 turned;
    offset_after_yaw(turned, angle);
    set_eye(to_world_space(to_camera_space(target_point) - turned));
}

void CAMERA::turn_pitch(float angle)
{
    VECTOR3 turned;
    offset_after_pitch(turned, angle);
    set_target(to_world_space(to_camera_space(eye_point) + turned));
}

void CAMERA::orbit_pitch(float angle)
{
    VECTOR3 turned;
    offset_after_pitch(turned, angle);
    set_eye(to_world_space(to_camera_space(target_point) - turned));
}

void CAMERA::move_target_keeping_offset(VECTOR3 const &point)
{
    SPHERICAL const kept = offset();
    set_target(point);
    set_eye(to_world_space(to_camera_space(target_point) - from_spherical(kept.yaw, kept.pitch, kept.length)));
}

void CAMERA::move_target_with_heading(VECTOR3 const &point, ANGLE16 angle)
{
    SPHERICAL const kept = offset();
    float const yaw = angle16_to_radians(angle);
    set_target(point);
    set_eye(to_world_space(to_camera_space(target_point) - from_spherical(yaw, kept.pitch, kept.length)));
}

MATRIX44 CAMERA::view() const
{
    if (fixed_projection || fixed_view)
        return view_matrix;
    VECTOR3 const z = normalised(target_point - eye_point);
    VECTOR3 const x = normalised(cross(up_axis, z));
    VECTOR3 const y = cross(z, x);
    float const c = std::cos(roll_angle), s = std::sin(roll_angle);
    VECTOR3 const rows[3] = {c * x - s * y, s * x + c * y, z};
    MATRIX44 m;
    for (unsigned i = 0; i < 3; ++i) {
        m[i][0] = rows[i].x;
        m[i][1] = rows[i].y;
        m[i][2] = rows[i].z;
        m[i][3] = -dot(rows[i], eye_point);
    }
    return m;
}

MATRIX44 CAMERA::projection() const { return projection(near(), far(), 1); }

MATRIX44 CAMERA::projection(float n, float f, float scale) const
{
    if (fixed_projection)
        return projection_matrix;
    MATRIX44 m;
    m[3][3] = 0;
    if (off_centre) {
        m[0][0] = 2 * n / (right - left);
        m[1][1] = 2 * n / (top - bottom);
        m[0][2] = (left + right) / (left - right);
        m[1][2] = (top + bottom) / (bottom - top);
        m[2][2] = f / (f - n);
        m[2][3] = n * f / (n - f);
        m[3][2] = 1;
    } else if (orthographic) {
        m[0][0] = 2 / (view_height() * aspect());
        m[1][1] = 2 / view_height();
        m[2][2] = 1 / (f - n);
        m[2][3] = n / (n - f);
        m[3][3] = 1;
    } else {
        if (f == n)
            f = n + 0.1f;
        float const t = std::tan(field_of_view() * scale * 0.5f);
        m[0][0] = 1 / t / aspect();
        m[1][1] = 1 / t;
        m[2][2] = f / (f - n);
        m[2][3] = -n * f / (f - n);
        m[3][2] = 1;
    }
    return m;
}

void CAMERA::view_volume(VIEW_VOLUME &out) const
{
    if (orthographic) {
        float const h = view_height(), w = h * aspect();
        out.set(view(), projection(), {w / 2, h / 2, near()}, {w / 2, h / 2, far()});
        out.aspect = w / h;
        out.field_of_view = 0;
    } else {
        float const t = std::tan(field_of_view() / 2);
        out.set(view(), projection(), {t * near() * aspect(), t * near(), near()},
                {t * far() * aspect(), t * far(), far()});
        out.aspect = aspect();
        out.field_of_view = field_of_view();
    }
}

}  // namespace SUPPORT
