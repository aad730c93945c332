// Belongs to the target whose precompiled headers all unit tests use.
