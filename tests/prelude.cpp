// Belongs to the precompiled headers of the tests; see CMakeLists.txt.
