#pragma once

#include <string>

class FbxManager;
class FbxScene;
class FbxDocument;

// The export run's use of the FBX library: making and releasing its objects and saving a scene.
// Progress and errors are printed on standard output.

// The glue's lines go to standard output, unless the FBX file itself is written there ("-",
// /dev/stdout): they go to standard error then, so as not to mix with the file's bytes.
void DirectGlueLinesAwayFrom(const char* outputFile);
// Creates the manager with its IO settings and the scene. Throws std::runtime_error when the
// manager or the scene cannot be made.
void InitializeSdkObjects(FbxManager*& manager, FbxScene*& scene);
// Destroys the manager and every object it made; prints a success line when `exitStatus`.
void DestroySdkObjects(FbxManager* manager, bool exitStatus);
// Writes `scene` to `fileName` with the first FBX writer whose description contains `format`
// ("binary", "ascii"), else the native one. False when the file could not be written; the
// writer's first error ("Could not write PATH: reason") is then printed and put in `error`.
bool SaveScene(FbxManager* manager, FbxDocument* scene, const char* fileName,
               const char* format = nullptr, bool embedMedia = false, std::string* error = nullptr);
