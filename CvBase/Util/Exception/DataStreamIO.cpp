#include "CvBase/Util/Exception/DataStreamIO.h"

namespace Util {
namespace Exception {

DataStreamIO::DataStreamIO(const String& message) : Base(message) {}

DataStreamIO::~DataStreamIO() = default;

String DataStreamIO::ToString() const {
    return Base::ToString() + "\nDataStreamIO\n";
}

}  // namespace Exception
}  // namespace Util
