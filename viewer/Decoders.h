// The decoders, one per structure type. Each shows the selected fields of the structures of its type and returns RyxOk;
// a field that can't be read ends a structure's output silently.
#pragma once

#include "Lib/RyxStatus.h"

RyxStatus StructDecodeType0();
RyxStatus StructDecodeType1();
RyxStatus StructDecodeType2();
RyxStatus StructDecodeType3();
RyxStatus StructDecodeType4();
RyxStatus StructDecodeType5();
RyxStatus StructDecodeType6();
RyxStatus StructDecodeType7();
RyxStatus StructDecodeType8();
RyxStatus StructDecodeType9();
RyxStatus StructDecodeType10();
RyxStatus StructDecodeType11();
RyxStatus StructDecodeType12();
RyxStatus StructDecodeType13();
RyxStatus StructDecodeType14();
RyxStatus StructDecodeType15();
RyxStatus StructDecodeType16();
RyxStatus StructDecodeType17();
RyxStatus StructDecodeType18();
RyxStatus StructDecodeType19();
RyxStatus StructDecodeType20();
RyxStatus StructDecodeType21();
RyxStatus StructDecodeType22();
RyxStatus StructDecodeType23();
RyxStatus StructDecodeType24();
RyxStatus StructDecodeType25();
RyxStatus StructDecodeType26();
RyxStatus StructDecodeType27();
RyxStatus StructDecodeType28();
RyxStatus StructDecodeType29();
