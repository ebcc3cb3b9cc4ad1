#pragma once
// The Verdict element-quality functions that the kernel calls, declared by hand.
//
// VTK 9.1 ships Verdict inside libvtkverdict-9.1.so (package libvtk9-dev) without its header.
// The library exports plain C symbols with VTK's name-mangling prefix (`nm -D` shows
// `vtkverdict__v_hex_scaled_jacobian`, not a C++-mangled name), so they are declared here as
// extern "C" with the signature of Verdict's own header: the corner count, then the corners as
// rows of x, y, z in Exodus node order. Verdict's header takes the coordinates non-const; none
// of these functions writes to them, so they are declared const here (a C symbol carries no
// parameter types, the call is the same). Each call on a known shape in QualityTest pins the
// signature down.
//
// Only functions that need nothing beyond the corners are declared: the "relative size" family
// reads a reference size from a global setter, and the triangle scaled Jacobian would consult a
// global normal callback, which is never set here (so its sign is not oriented). Wedges use
// Verdict's newer functions, named without the `v_` prefix; pyramids have only a volume (the
// kernel computes its own pyramid metrics, see Quality.cpp).
//
// Threading: the functions are pure as long as no global setter is called; none is declared.

extern "C" {

using VerdictCorners = const double (*)[3];

double vtkverdict__v_edge_length(int n, VerdictCorners xyz);

double vtkverdict__v_tri_area(int n, VerdictCorners xyz);
double vtkverdict__v_tri_aspect_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tri_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_tri_condition(int n, VerdictCorners xyz);
double vtkverdict__v_tri_distortion(int n, VerdictCorners xyz);
double vtkverdict__v_tri_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tri_maximum_angle(int n, VerdictCorners xyz);
double vtkverdict__v_tri_minimum_angle(int n, VerdictCorners xyz);
double vtkverdict__v_tri_radius_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tri_scaled_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_tri_shape(int n, VerdictCorners xyz);

double vtkverdict__v_quad_area(int n, VerdictCorners xyz);
double vtkverdict__v_quad_aspect_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_quad_condition(int n, VerdictCorners xyz);
double vtkverdict__v_quad_distortion(int n, VerdictCorners xyz);
double vtkverdict__v_quad_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_quad_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_quad_max_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_quad_max_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_quad_maximum_angle(int n, VerdictCorners xyz);
double vtkverdict__v_quad_med_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_quad_minimum_angle(int n, VerdictCorners xyz);
double vtkverdict__v_quad_oddy(int n, VerdictCorners xyz);
double vtkverdict__v_quad_radius_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_quad_scaled_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_quad_shape(int n, VerdictCorners xyz);
double vtkverdict__v_quad_shear(int n, VerdictCorners xyz);
double vtkverdict__v_quad_skew(int n, VerdictCorners xyz);
double vtkverdict__v_quad_stretch(int n, VerdictCorners xyz);
double vtkverdict__v_quad_taper(int n, VerdictCorners xyz);
double vtkverdict__v_quad_warpage(int n, VerdictCorners xyz);

double vtkverdict__v_tet_aspect_beta(int n, VerdictCorners xyz);
double vtkverdict__v_tet_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_tet_aspect_gamma(int n, VerdictCorners xyz);
double vtkverdict__v_tet_aspect_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tet_collapse_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tet_condition(int n, VerdictCorners xyz);
double vtkverdict__v_tet_distortion(int n, VerdictCorners xyz);
double vtkverdict__v_tet_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tet_equivolume_skew(int n, VerdictCorners xyz);
double vtkverdict__v_tet_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_tet_minimum_angle(int n, VerdictCorners xyz);
double vtkverdict__v_tet_radius_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_tet_scaled_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_tet_shape(int n, VerdictCorners xyz);
double vtkverdict__v_tet_squish_index(int n, VerdictCorners xyz);
double vtkverdict__v_tet_volume(int n, VerdictCorners xyz);

double vtkverdict__v_hex_condition(int n, VerdictCorners xyz);
double vtkverdict__v_hex_diagonal(int n, VerdictCorners xyz);
double vtkverdict__v_hex_dimension(int n, VerdictCorners xyz);
double vtkverdict__v_hex_distortion(int n, VerdictCorners xyz);
double vtkverdict__v_hex_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_hex_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_hex_max_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_hex_max_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__v_hex_med_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__v_hex_oddy(int n, VerdictCorners xyz);
double vtkverdict__v_hex_scaled_jacobian(int n, VerdictCorners xyz);
double vtkverdict__v_hex_shape(int n, VerdictCorners xyz);
double vtkverdict__v_hex_shear(int n, VerdictCorners xyz);
double vtkverdict__v_hex_skew(int n, VerdictCorners xyz);
double vtkverdict__v_hex_stretch(int n, VerdictCorners xyz);
double vtkverdict__v_hex_taper(int n, VerdictCorners xyz);
double vtkverdict__v_hex_volume(int n, VerdictCorners xyz);

double vtkverdict__v_wedge_volume(int n, VerdictCorners xyz);
double vtkverdict__wedge_condition(int n, VerdictCorners xyz);
double vtkverdict__wedge_distortion(int n, VerdictCorners xyz);
double vtkverdict__wedge_edge_ratio(int n, VerdictCorners xyz);
double vtkverdict__wedge_jacobian(int n, VerdictCorners xyz);
double vtkverdict__wedge_max_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__wedge_max_stretch(int n, VerdictCorners xyz);
double vtkverdict__wedge_mean_aspect_frobenius(int n, VerdictCorners xyz);
double vtkverdict__wedge_scaled_jacobian(int n, VerdictCorners xyz);
double vtkverdict__wedge_shape(int n, VerdictCorners xyz);

double vtkverdict__v_pyramid_volume(int n, VerdictCorners xyz);

} // extern "C"
