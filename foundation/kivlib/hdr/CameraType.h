#pragma once

/// Cameras and field charts by the shape of their picture. The numbers are stored.
enum CameraType : int {
    CAMERA_CUSTOM = 0,
    CAMERA_FIELD_CHART = 1, // the animator's chart, 48 to 35
    CAMERA_ACADEMY = 2,     // 4 to 3
    CAMERA_EUROPEAN = 3,    // 1.66 to 1
    CAMERA_VISTAVISION = 4, // 1.85 to 1
    CAMERA_HDTV = 5,        // 16 to 9
    CAMERA_CINEMASCOPE = 6  // 2.35 to 1
};

/// Width over height. An unknown type has the shape of the academy's.
double inq_ratio_for_camera(CameraType type);

/// Field charts. The numbers are stored.
enum FieldChartStyle : int {
    FIELD_CHART_NORTH_SOUTH = 0,
    FIELD_CHART_GRID = 1,
    FIELD_CHART_MILLIMETRES = 2
};
