// CAMERA: a position, a target and an up vector, with perspective, orthographic and off-centre projections, moves and
// turns. It stands in a left-handed world: its view space has x to the right, y up and z forward, depth runs from 0 at
// the near plane to 1 at the far one. Matrices are row by row and act on column vectors; angles are radians.
//
// Every operation is virtual, and their order is part of the interface: a derived class may replace any of them. Calls
// between operations go through the table too. Nothing reports; degenerate input is repaired by update_axes. Not for
// several threads at once.
#pragma once

#include "support/camera/api.h"
#include "support/maths/angle.h"
#include "support/maths/matrix.h"

namespace SUPPORT {

struct VIEW_VOLUME;

class CAMERA_API CAMERA {
public:
    // At the origin, looking along z. `given` is kept for derived classes.
    explicit CAMERA(float given = 0);
    virtual ~CAMERA() = default;
    CAMERA(CAMERA const &) = default;
    CAMERA &operator=(CAMERA const &) = default;

    virtual VECTOR3 eye() const;
    virtual VECTOR3 target() const;
    virtual VECTOR3 up() const;
    virtual VECTOR3 forward() const;      // of length 1
    virtual float field_of_view() const;  // vertical; the override, if one is set
    virtual float aspect() const;         // width / height; the override, if one is set
    virtual float near() const;
    virtual float far() const;
    virtual float view_height() const;  // of an orthographic camera
    virtual float min_pitch() const;
    virtual float max_pitch() const;
    virtual void set_near(float value);
    virtual void set_far(float value);
    virtual void set_aspect(float value);

    // translate adds to eye and target; so does move, but an orthographic camera's view height takes the y part, and
    // stays at 0.001 or more.
    virtual void move(VECTOR3 const &vector);
    virtual void translate(VECTOR3 const &vector);
    // The point goes through constrained() first.
    virtual void set_eye(VECTOR3 const &point);
    virtual void set_target(VECTOR3 const &point);
    virtual void set_up(VECTOR3 const &vector);
    virtual void set_pitch_limits(float min, float max);
    virtual void set_field_of_view(float value);

    virtual void set_view_height(float value);
    virtual float roll() const;  // about the view axis
    virtual void set_roll(float value);
    virtual float first_distance() const;  // what the two mean is up to a derived class
    virtual void set_first_distance(float value);
    virtual float second_distance() const;
    virtual void set_second_distance(float value);

    virtual void move_forward(float distance);  // level, along the line of sight
    virtual void move_back(float distance);
    virtual void move_right(float distance);  // level, across it
    virtual void move_left(float distance);
    virtual void move_up(float distance);  // along up()
    virtual void move_down(float distance);
    virtual void dolly(float distance);  // along forward()
    virtual void set_position_keeping_view(VECTOR3 const &point);
    // Turning moves the target around the eye, orbiting the eye around the target. Pitch keeps to its limits.
    virtual void turn_yaw(float angle);
    virtual void orbit_yaw(float angle);
    virtual void turn_pitch(float angle);
    virtual void orbit_pitch(float angle);
    // Columns 3, 2 and 1: eye, direction of sight, up.
    virtual void set_from_matrix(MATRIX44 const &matrix);
    virtual void set_target_and_eye(VECTOR3 const &new_target, VECTOR3 const &new_eye);
    // The eye keeps its place relative to the target, or its pitch and distance with a new yaw.
    virtual void move_target_keeping_offset(VECTOR3 const &point);
    virtual void move_target_with_heading(VECTOR3 const &point, ANGLE16 angle);

    virtual MATRIX44 view() const;
    virtual MATRIX44 projection() const;
    virtual void view_volume(VIEW_VOLUME &out) const;
    // `scale` widens a perspective camera's field of view.
    virtual MATRIX44 projection(float near_distance, float far_distance, float scale) const;
    virtual float given_value() const;
    // A perspective projection with these sides of the near rectangle, in place of any other, while `flag` is set.
    virtual void set_off_centre(bool flag, float left, float right, float top, float bottom);
    virtual float off_centre_bottom() const;
    virtual float off_centre_top() const;
    virtual float off_centre_left() const;
    virtual float off_centre_right() const;
    // target - eye, turned. The angle is added to the yaw or the pitch that the offset has.
    virtual void offset_after_yaw(VECTOR3 &out, float angle) const;
    virtual void offset_after_pitch(VECTOR3 &out, float angle) const;
    // Makes the directions follow eye, target and up; run after each change of these.
    virtual void update_axes();

protected:
    // Where a point that is wanted as eye or target may really be.
    virtual VECTOR3 constrained(VECTOR3 const &point) const;

public:
    virtual float tan_scale() const;  // 2 * tan(field of view / 2), of the camera's own field of view

protected:
    // Between world space and the one in which the camera turns.
    virtual VECTOR3 to_camera_space(VECTOR3 const &point) const;
    virtual VECTOR3 to_world_space(VECTOR3 const &point) const;

public:
    bool is_orthographic() const { return orthographic != 0; }
    void set_orthographic(bool flag) { orthographic = flag; }
    // A fixed projection fixes the view as well. The matrices stay when the flags go.
    void set_fixed_projection(bool flag, MATRIX44 const &view_to_use, MATRIX44 const &projection_to_use);
    void set_fixed_view(bool flag, MATRIX44 const &view_to_use);
    void set_field_of_view_override(bool flag, float value) { field_of_view_override = {flag, value}; }
    void set_aspect_override(bool flag, float value) { aspect_override = {flag, value}; }
    VECTOR3 flat_forward() const { return flat_forward_axis; }  // forward without its y, of length 1 or 0
    VECTOR3 flat_right() const { return flat_right_axis; }

private:
    struct OVERRIDE {
        std::uint8_t flag = 0;
        float value = 0;
    };
    struct SPHERICAL {
        float yaw, pitch, length;
    };
    SPHERICAL offset() const;

    VECTOR3 eye_point;
    VECTOR3 target_point = {0, 0, 1};
    float roll_angle = 0;
    float field_of_view_angle = 1;
    float aspect_ratio = 1;
    std::uint8_t orthographic = 0;
    float orthographic_height = 1;
    float near_distance = 0.1f;
    float far_distance = 1000;
    float distances[2] = {40, 1000};
    float given;
    VECTOR3 up_axis = {0, 1, 0};
    VECTOR3 forward_axis;
    VECTOR3 flat_forward_axis;
    VECTOR3 flat_right_axis;
    float pitch_limits[2] = {-0.6f, 0.6f};
    std::uint8_t off_centre = 0;
    float bottom = 0, top = 0, left = 0, right = 0;
    std::uint8_t fixed_projection = 0;
    std::uint8_t fixed_view = 0;
    OVERRIDE field_of_view_override;
    MATRIX44 view_matrix, projection_matrix;
    OVERRIDE aspect_override;
    float scale_of_tan;
};

}  // namespace SUPPORT
