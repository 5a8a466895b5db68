// Decoders of string lists, languages, groups, additional information, extended onboard device information, and the
// marks of inactive structures and of the table's end (types 11 to 14, 40, 41, 126 and 127). Of the lists of types 11
// to 14 they show what the field rows name: the count or the first item; the rest of them is shown of the whole table.
#include "viewer/Decoders.h"

namespace {

// Types 11 and 12, OEM Strings and System Configuration Options, which have the same layout.

constexpr DecoderField StringCountFields[] = {NumberField(3, "Count : 0x%02X (%02d)\n")};

constexpr DecoderField StringListWhole[] = {StringsField(4, "String %d : %s\n")};

// Type 13, BIOS Language Information.

constexpr const char* LanguageFormatTexts[] = {"Long format", "Abbreviated format"};

constexpr DecoderField Type13Fields[] = {
    NumberField(3, "Installable Languages : 0x%02X (%02d)\n"),
    TextField(4, "Flags : 0x%02X - %s\n", LanguageFormatTexts, 0x01),
    CountedField(5),
    StringField(6, "Current Languages : %s\n"),
};

constexpr DecoderField Type13Whole[] = {StringsField(7, "Language %d : %s\n", "Languages")};

// Type 14, Group Associations.

constexpr DecoderField Type14Fields[] = {
    StringField(3, "Group Name : %s\n"),
    NumberField(4, "Item Type : 0x%02X (%02d)\n"),
    NumberField(5, "Item Handle : 0x%04X (%02d)\n"),
};

constexpr RecordLayout FurtherItems = {.Size = 3, .Fields = Type14Fields + 1, .FieldCount = 2};

constexpr DecoderField Type14Whole[] = {RecordsField(6, &FurtherItems, "", "Further Items")};

// Type 40, Additional Information.

constexpr std::uint8_t EntryCountRow = 3;
constexpr std::uint8_t EntryListOffset = 0x05;
constexpr std::size_t EntryValueOffset = 5; // within an entry: what stands before its value

constexpr RecordLine EntryLines[] = {
    {0, 1, "Entry Length : 0x%02X (%02d)\n", "nn"},
    {1, 2, "Referenced Handle : 0x%04X (%02d)\n", "nn"},
    {3, 1, "Referenced Offset : 0x%02X\n"},
    {4, 1, "String : 0x%02X\n"},
};

// Entries follow each other by their own lengths, so one that can't be right hides all that come after it.
FieldOutcome AdditionalEntriesShow(const DecoderField&, const StructPlace& place) {
    FieldValue entries;
    FieldValue count;
    if (StructAreaRead(place.Type, place.Instance, EntryListOffset, &entries) != RyxOk ||
        !FieldRead(place, EntryCountRow, &count)) {
        return FieldOutcome::Unreadable;
    }
    ReportItems("Number of Additional Information entries :\n", "Additional Information entries");
    std::span<const std::uint8_t> list = entries.Bytes;
    for (; count.Number != 0 && !list.empty(); --count.Number) {
        const std::size_t length = list[0];
        if (length < EntryValueOffset || length > list.size()) {
            break;
        }
        ReportItem();
        RecordPrint(EntryLines, list.first(EntryValueOffset));
        if (length > EntryValueOffset) {
            ReportLine({list.subspan(EntryValueOffset, length - EntryValueOffset)}, "Value : 0x%02x\n",
                       list[EntryValueOffset]);
        }
        list = list.subspan(length);
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type40Fields[] = {
    NumberField(EntryCountRow, "Number of Additional Information entries : 0x%02X (%d)\n"),
    OwnField(4, AdditionalEntriesShow),
};

// Type 41, Onboard Devices Extended Information.

constexpr const char* OnboardDeviceStatusTexts[] = {"Disabled", "Enabled"};

constexpr const char* OnboardDeviceTypeLow[] = {
    "",           "Other", "Unknown",         "Video",           "SCSI Controller", "Ethernet",
    "Token Ring", "Sound", "PATA Controller", "SATA Controller", "SAS Controller",
};

constexpr TextRange OnboardDeviceTypeNewer[] = {
    {0x0B, "Wireless LAN"}, {0x0C, "Bluetooth"},       {0x0D, "WWAN"},
    {0x0E, "eMMC"},         {0x0F, "NVMe Controller"}, {0x10, "UFS Controller"},
};

constexpr TextTable OnboardDeviceTypeTexts = TextTable(OnboardDeviceTypeLow).With(OnboardDeviceTypeNewer);

constexpr BitGroup OnboardDeviceGroups[] = {
    {" Status : %s\n", 7, 0x1, OnboardDeviceStatusTexts},
    {" Type : %s\n", 0, 0x7F, OnboardDeviceTypeTexts},
};

constexpr BitGroup DeviceFunctionGroups[] = {
    {" Device Number : 0x%X\n", 3, 0x1F, {}},
    {" Function Number : 0x%X\n", 0, 0x7, {}},
};

constexpr DecoderField Type41Fields[] = {
    StringField(3, "Reference Designation : %s\n"),
    GroupsField(4, "Device Type : 0x%02X\n", OnboardDeviceGroups),
    NumberField(5, "Device Type Instance : 0x%02X (%d)\n"),
    NumberField(6, "Segment Group Number : 0x%04X\n"),
    NumberField(7, "Bus Number : 0x%02X (%d)\n"),
    GroupsField(8, "Device/Function Number : 0x%02X\n", DeviceFunctionGroups),
};

} // namespace

constinit const StructDecoder StructDecodeType11(11, "OEM Strings", DecoderForm::Single, StringCountFields,
                                                 StringListWhole);
constinit const StructDecoder StructDecodeType12(12, "System Config", DecoderForm::Single, StringCountFields,
                                                 StringListWhole);
constinit const StructDecoder StructDecodeType13(13, "BIOS Language", DecoderForm::Loop, Type13Fields, Type13Whole);
constinit const StructDecoder StructDecodeType14(14, "Group Association", DecoderForm::Loop, Type14Fields, Type14Whole);
constinit const StructDecoder StructDecodeType40(40, "Additional Info", DecoderForm::Loop, Type40Fields);
constinit const StructDecoder StructDecodeType41(41, "Onboard Devices Extended Info", DecoderForm::Loop, Type41Fields);
// Type 126, Inactive, and type 127, End-of-Table, have no fields of their own.
constinit const StructDecoder StructDecodeType126(126, "Inactive", DecoderForm::Single, {});
constinit const StructDecoder StructDecodeType127(127, "End-Of-Table", DecoderForm::Single, {});
