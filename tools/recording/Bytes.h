// Bytes that the cluster gives or takes: in a recording as hexadecimal digits, and what of them must not be in one.
#ifndef RECORDING_BYTES_H
#define RECORDING_BYTES_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace recording {

typedef std::vector<unsigned char> Bytes;

// False when the text is not pairs of hexadecimal digits.
bool FromHex(const std::string& digits, Bytes& bytes);

// What the bytes of a control are, for all kinds of objects.
enum class ControlData {
    None,
    Name,
    Kept,
    Properties,
    Disk,
    Unknown
};
ControlData InputOf(unsigned long controlCode);
ControlData OutputOf(unsigned long controlCode);

// Whether the control changes something: its code says so.
bool IsChangingControl(unsigned long controlCode);

// How names are replaced, in UTF-16 and of the same length. None: they stay.
typedef std::function<std::wstring(const std::wstring& name)> Rename;

// Replaces in place, of the length that is there: the values of properties whose names say that they are secret by
// asterisks or zeros, names by what stands for them, and binary values, what is not known, or not as it should be, by
// zeros.
void Clean(Bytes& bytes, ControlData data, const Rename& rename);

// The bytes that a property list takes: those behind it belong to the caller's buffer only. `size` when it is cut.
std::size_t PropertyListSize(const void* list, std::size_t size);

// Whether a property's name says that its value is secret.
bool IsSecretProperty(const std::wstring& name);

// A property's text, on its own.
std::wstring CleanProperty(const std::wstring& property, std::wstring value, const Rename& rename);

} // namespace recording

#endif
