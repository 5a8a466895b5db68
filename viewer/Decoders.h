// The decoders, one per structure type. Each shows the selected fields of the structures of its type and returns RyxOk;
// a field that can't be read ends a structure's output silently.
#pragma once

#include "Lib/RyxStatus.h"

RyxStatus StructDecodeType0();
RyxStatus StructDecodeType1();
RyxStatus StructDecodeType2();
RyxStatus StructDecodeType3();
RyxStatus StructDecodeType30();
RyxStatus StructDecodeType31();
RyxStatus StructDecodeType32();
RyxStatus StructDecodeType33();
RyxStatus StructDecodeType34();
RyxStatus StructDecodeType35();
RyxStatus StructDecodeType36();
RyxStatus StructDecodeType37();
RyxStatus StructDecodeType38();
RyxStatus StructDecodeType39();
RyxStatus StructDecodeType40();
RyxStatus StructDecodeType41();
RyxStatus StructDecodeType42();
RyxStatus StructDecodeType126();
RyxStatus StructDecodeType127();
