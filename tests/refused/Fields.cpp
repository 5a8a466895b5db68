// Fields of a processor that fit their rows. MISTAKE, from 1 on, is the number of one that is made not to: then this
// does not compile.
#include "viewer/Decoders.h"

namespace {

consteval auto Unless(int mistake, auto right, decltype(right) wrong) {
    return MISTAKE == mistake ? wrong : right;
}

constexpr const char* Texts[] = {"None"};

constexpr BitGroup Groups[] = {{" Status : %s\n", Unless(1, 7, 8), 0x01, Texts}};

constexpr DecoderField Fields[] = {
    StringField(3, Unless(2, "Socket Designation : %s\n", "Socket Designation : %d\n")),
    TextField(4, Unless(3, "Processor Type : 0x%02X - %s\n", "Processor Type : 0x%02X\n"), Texts),
    GroupsField(5, "Processor Family : 0x%02X\n", Groups),
    Unless(4, StringField(6, "Processor Manufacturer : %s\n"), NumberField(6, "Processor Manufacturer : 0x%02X\n")),
    NumberField(7, Unless(5, "Processor ID : 0x%llX\n", "Processor ID : 0x%X\n")),
    Unless(6, NumberField(9, "Voltage : 0x%02X\n"), StringField(9, "Voltage : %s\n")),
    NumberField(10, Unless(7, "External Clock : 0x%04X (%d)MHz\n", "External Clock : 0x%02X (%d)MHz\n")),
    NumberField(Unless(8, 11, 10), "Max Speed : 0x%04X (%d)MHz\n"),
    NumberField(12, Unless(9, "Current Speed : 0x%04X (%d)MHz\n", "Current Speed : 0x%04X (%s)MHz\n")),
    MarkField(13, "Status : 0x%02X ", Unless(10, 0xFF, 0x100)),
    MarkField(15, "L1 Cache Handle : 0x%04X ", 0xFFFF, Unless(11, "- No provided\n", "- No %s\n")),
    NumberField(16, Unless(12, "L2 Cache Handle : 0x%04X (%d)\n", "L2 Cache Handle : 0x%04llX (%d)\n")),
    NumberField(Unless(13, 25, 26), "Processor Family2 : 0x%04X\n"),
};

} // namespace

constinit const StructDecoder StructDecodeType4(4, "Processor", DecoderForm::Single, Fields);
