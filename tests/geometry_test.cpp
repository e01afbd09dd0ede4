#include <gtest/gtest.h>

#include <surveymsg/surveymsg.h>

namespace {

TEST(Geometry, RangeAndBearing) {
    struct Case {
        double east, north, range, bearing;
    };
    const Case cases[] = {
        {3, 4, 5.0, 36.86989764584405},
        {0, 1, 1.0, 0.0},
        {0, -1, 1.0, 180.0},
        {-1, -1, 1.4142135623730951, 225.0},
        {1, 0, 1.0, 90.0},
        {-1, 0, 1.0, 270.0},
        {0, 0, 0.0, 360.0},
        {5, 5e-11, 5.0, 90.0},
        {0, 1e6, 1e6, 0.0},
    };
    for (const Case& each : cases) {
        double range = -1.0;
        double bearing = -1.0;
        CPosnMsg::Polar(100.0, 0.0, 100.0 + each.east, each.north, &range, &bearing);
        EXPECT_DOUBLE_EQ(range, each.range);
        EXPECT_DOUBLE_EQ(bearing, each.bearing) << each.east << " " << each.north;
    }
}

TEST(Geometry, HeadingsFollowEachOther) {
    CPosnMsg position;
    position.Convergence = 20.0;
    position.SetGridHdg(10.0);
    EXPECT_EQ(position.TrueHeading, 350.0);
    position.SetTrueHdg(350.0);
    EXPECT_EQ(position.GridHeading, 10.0);
    position.GridHeading = 0.0;
    position.SetConvergence(5.0);
    EXPECT_EQ(position.TrueHeading, 355.0);
    EXPECT_EQ(position.GridHeading, 0.0);
    position.Convergence = 0.0;
    position.SetGridHdg(-400.0);  // one turn is added, no more
    EXPECT_EQ(position.GridHeading, -400.0);
    EXPECT_EQ(position.TrueHeading, -40.0);
    position.SetGridHdg(370.0);
    EXPECT_EQ(position.TrueHeading, 10.0);
}

TEST(Geometry, RotatesByRollThenPitchThenHeading) {
    struct Case {
        double pitch, roll, heading;
        double from[3], to[3];
    };
    const Case cases[] = {
        {0, 0, 0, {1, 2, 3}, {1, 2, 3}},   {0, 0, 90, {0, 1, 0}, {1, 0, 0}},
        {0, 0, 90, {1, 0, 0}, {0, -1, 0}}, {90, 0, 0, {0, 1, 0}, {0, 0, -1}},
        {90, 0, 0, {0, 0, 1}, {0, 1, 0}},  {0, 90, 0, {1, 0, 0}, {0, 0, 1}},
        {0, 90, 0, {0, 0, 1}, {-1, 0, 0}}, {10, 20, 30, {1, 2, 3}, {1.18447, 2.224299, 2.765777}},
    };
    for (const Case& each : cases) {
        CPosnMsg position;
        position.Pitch = each.pitch;
        position.Roll = each.roll;
        position.GridHeading = each.heading;
        position.TrueHeading = 99.0;
        double x = each.from[0], y = each.from[1], z = each.from[2];
        position.ApplyPRH(&x, &y, &z);
        EXPECT_NEAR(x, each.to[0], 1e-6);
        EXPECT_NEAR(y, each.to[1], 1e-6);
        EXPECT_NEAR(z, each.to[2], 1e-6);
    }
}

TEST(Geometry, DistanceIsInSpace) {
    CPosnMsg here, there;
    there.East = 3.0;
    there.North = 4.0;
    there.Depth = 12.0;
    EXPECT_EQ(here.DistanceFrom(&there), 13.0);
    EXPECT_EQ(there.DistanceFrom(&here), 13.0);
}

}  // namespace
