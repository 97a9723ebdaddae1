// One-value fields of FbxIO: open the field, write the value, close it.
#include "fbx/io/fbxio.h"

template <typename Write>
void FbxIO::WriteNamed(const char* name, const Write& write) {
    FieldWriteBegin(name);
    write();
    FieldWriteEnd();
}

void FbxIO::FieldWriteI(const char* name, int value) {
    WriteNamed(name, [&] { FieldWriteI(value); });
}
void FbxIO::FieldWriteUI(const char* name, unsigned int value) {
    WriteNamed(name, [&] { FieldWriteUI(value); });
}
void FbxIO::FieldWriteB(const char* name, bool value) {
    WriteNamed(name, [&] { FieldWriteB(value); });
}
void FbxIO::FieldWriteLL(const char* name, long long value) {
    WriteNamed(name, [&] { FieldWriteLL(value); });
}
void FbxIO::FieldWriteULL(const char* name, unsigned long long value) {
    WriteNamed(name, [&] { FieldWriteULL(value); });
}
void FbxIO::FieldWriteD(const char* name, double value) {
    WriteNamed(name, [&] { FieldWriteD(value); });
}
void FbxIO::FieldWriteF(const char* name, float value) {
    WriteNamed(name, [&] { FieldWriteF(value); });
}
void FbxIO::FieldWriteShort(const char* name, short value) {
    WriteNamed(name, [&] { FieldWriteShort(value); });
}
void FbxIO::FieldWriteUShort(const char* name, unsigned short value) {
    WriteNamed(name, [&] { FieldWriteUShort(value); });
}
void FbxIO::FieldWriteByte(const char* name, signed char value) {
    WriteNamed(name, [&] { FieldWriteByte(value); });
}
void FbxIO::FieldWriteUByte(const char* name, unsigned char value) {
    WriteNamed(name, [&] { FieldWriteUByte(value); });
}
void FbxIO::FieldWriteCH(const char* name, char value) {
    WriteNamed(name, [&] { FieldWriteCH(value); });
}
void FbxIO::FieldWriteS(const char* name, const char* value) {
    WriteNamed(name, [&] { FieldWriteS(value); });
}
void FbxIO::FieldWriteC(const char* name, const char* value) {
    WriteNamed(name, [&] { FieldWriteC(value); });
}
void FbxIO::FieldWriteR(const char* name, const void* data, size_t size) {
    WriteNamed(name, [&] { FieldWriteR(data, size); });
}
void FbxIO::FieldWriteT(const char* name, const FbxTime& time) {
    WriteNamed(name, [&] { FieldWriteT(time); });
}
void FbxIO::FieldWriteTS(const char* name, const FbxTimeSpan& span) {
    WriteNamed(name, [&] { FieldWriteTS(span); });
}
void FbxIO::FieldWrite3D(const char* name, const double* values) {
    WriteNamed(name, [&] { FieldWrite3D(values); });
}
void FbxIO::FieldWrite4D(const char* name, const double* values) {
    WriteNamed(name, [&] { FieldWrite4D(values); });
}
void FbxIO::FieldWrite3F(const char* name, const float* values) {
    WriteNamed(name, [&] { FieldWrite3F(values); });
}
void FbxIO::FieldWrite4F(const char* name, const float* values) {
    WriteNamed(name, [&] { FieldWrite4F(values); });
}
