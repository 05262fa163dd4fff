// The registered wave format tags with their registrants, spelt as in the registry: the system
// header mmreg.h, in the edition that knows the Unisys tags and ends at 0x2000, and PCM, which is
// defined elsewhere. RFC 2361 has most of them. What names no coding of its own is left out:
// unknown, extensible and development.
#include "formats/wav/wave_format_names.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace Quorvex {
namespace {

struct RegisteredFormat {
  std::uint16_t tag;
  const wchar_t* name;
};

constexpr RegisteredFormat kFormats[] = {
    {0x0001, L"WAVE_FORMAT_PCM - Uncompressed Audio"},
    {0x0002, L"WAVE_FORMAT_ADPCM - Microsoft Corporation"},
    {0x0003, L"WAVE_FORMAT_IEEE_FLOAT - Microsoft Corporation"},
    {0x0004, L"WAVE_FORMAT_VSELP - Compaq Computer Corp."},
    {0x0005, L"WAVE_FORMAT_IBM_CVSD - IBM Corporation"},
    {0x0006, L"WAVE_FORMAT_ALAW - Microsoft Corporation"},
    {0x0007, L"WAVE_FORMAT_MULAW - Microsoft Corporation"},
    {0x0008, L"WAVE_FORMAT_DTS - Microsoft Corporation"},
    {0x0009, L"WAVE_FORMAT_DRM - Microsoft Corporation"},
    {0x0010, L"WAVE_FORMAT_OKI_ADPCM - OKI"},
    {0x0011, L"WAVE_FORMAT_DVI_ADPCM - Intel Corporation"},
    {0x0012, L"WAVE_FORMAT_MEDIASPACE_ADPCM - Videologic"},
    {0x0013, L"WAVE_FORMAT_SIERRA_ADPCM - Sierra Semiconductor Corp"},
    {0x0014, L"WAVE_FORMAT_G723_ADPCM - Antex Electronics Corporation"},
    {0x0015, L"WAVE_FORMAT_DIGISTD - DSP Solutions, Inc."},
    {0x0016, L"WAVE_FORMAT_DIGIFIX - DSP Solutions, Inc."},
    {0x0017, L"WAVE_FORMAT_DIALOGIC_OKI_ADPCM - Dialogic Corporation"},
    {0x0018, L"WAVE_FORMAT_MEDIAVISION_ADPCM - Media Vision, Inc."},
    {0x0019, L"WAVE_FORMAT_CU_CODEC - Hewlett-Packard Company"},
    {0x0020, L"WAVE_FORMAT_YAMAHA_ADPCM - Yamaha Corporation of America"},
    {0x0021, L"WAVE_FORMAT_SONARC - Speech Compression"},
    {0x0022, L"WAVE_FORMAT_DSPGROUP_TRUESPEECH - DSP Group, Inc"},
    {0x0023, L"WAVE_FORMAT_ECHOSC1 - Echo Speech Corporation"},
    {0x0024, L"WAVE_FORMAT_AUDIOFILE_AF36 - Virtual Music, Inc."},
    {0x0025, L"WAVE_FORMAT_APTX - Audio Processing Technology"},
    {0x0026, L"WAVE_FORMAT_AUDIOFILE_AF10 - Virtual Music, Inc."},
    {0x0027, L"WAVE_FORMAT_PROSODY_1612 - Aculab plc"},
    {0x0028, L"WAVE_FORMAT_LRC - Merging Technologies S.A."},
    {0x0030, L"WAVE_FORMAT_DOLBY_AC2 - Dolby Laboratories"},
    {0x0031, L"WAVE_FORMAT_GSM610 - Microsoft Corporation"},
    {0x0032, L"WAVE_FORMAT_MSNAUDIO - Microsoft Corporation"},
    {0x0033, L"WAVE_FORMAT_ANTEX_ADPCME - Antex Electronics Corporation"},
    {0x0034, L"WAVE_FORMAT_CONTROL_RES_VQLPC - Control Resources Limited"},
    {0x0035, L"WAVE_FORMAT_DIGIREAL - DSP Solutions, Inc."},
    {0x0036, L"WAVE_FORMAT_DIGIADPCM - DSP Solutions, Inc."},
    {0x0037, L"WAVE_FORMAT_CONTROL_RES_CR10 - Control Resources Limited"},
    {0x0038, L"WAVE_FORMAT_NMS_VBXADPCM - Natural MicroSystems"},
    {0x0039, L"WAVE_FORMAT_CS_IMAADPCM - Crystal Semiconductor IMA ADPCM"},
    {0x003A, L"WAVE_FORMAT_ECHOSC3 - Echo Speech Corporation"},
    {0x003B, L"WAVE_FORMAT_ROCKWELL_ADPCM - Rockwell International"},
    {0x003C, L"WAVE_FORMAT_ROCKWELL_DIGITALK - Rockwell International"},
    {0x003D, L"WAVE_FORMAT_XEBEC - Xebec Multimedia Solutions Limited"},
    {0x0040, L"WAVE_FORMAT_G721_ADPCM - Antex Electronics Corporation"},
    {0x0041, L"WAVE_FORMAT_G728_CELP - Antex Electronics Corporation"},
    {0x0042, L"WAVE_FORMAT_MSG723 - Microsoft Corporation"},
    {0x0050, L"WAVE_FORMAT_MPEG - Microsoft Corporation"},
    {0x0052, L"WAVE_FORMAT_RT24 - InSoft, Inc."},
    {0x0053, L"WAVE_FORMAT_PAC - InSoft, Inc."},
    {0x0055, L"WAVE_FORMAT_MPEGLAYER3 - ISO/MPEG Layer3 Format Tag"},
    {0x0059, L"WAVE_FORMAT_LUCENT_G723 - Lucent Technologies"},
    {0x0060, L"WAVE_FORMAT_CIRRUS - Cirrus Logic"},
    {0x0061, L"WAVE_FORMAT_ESPCM - ESS Technology"},
    {0x0062, L"WAVE_FORMAT_VOXWARE - Voxware Inc"},
    {0x0063, L"WAVE_FORMAT_CANOPUS_ATRAC - Canopus, co., Ltd."},
    {0x0064, L"WAVE_FORMAT_G726_ADPCM - APICOM"},
    {0x0065, L"WAVE_FORMAT_G722_ADPCM - APICOM"},
    {0x0067, L"WAVE_FORMAT_DSAT_DISPLAY - Microsoft Corporation"},
    {0x0069, L"WAVE_FORMAT_VOXWARE_BYTE_ALIGNED - Voxware Inc"},
    {0x0070, L"WAVE_FORMAT_VOXWARE_AC8 - Voxware Inc"},
    {0x0071, L"WAVE_FORMAT_VOXWARE_AC10 - Voxware Inc"},
    {0x0072, L"WAVE_FORMAT_VOXWARE_AC16 - Voxware Inc"},
    {0x0073, L"WAVE_FORMAT_VOXWARE_AC20 - Voxware Inc"},
    {0x0074, L"WAVE_FORMAT_VOXWARE_RT24 - Voxware Inc"},
    {0x0075, L"WAVE_FORMAT_VOXWARE_RT29 - Voxware Inc"},
    {0x0076, L"WAVE_FORMAT_VOXWARE_RT29HW - Voxware Inc"},
    {0x0077, L"WAVE_FORMAT_VOXWARE_VR12 - Voxware Inc"},
    {0x0078, L"WAVE_FORMAT_VOXWARE_VR18 - Voxware Inc"},
    {0x0079, L"WAVE_FORMAT_VOXWARE_TQ40 - Voxware Inc"},
    {0x0080, L"WAVE_FORMAT_SOFTSOUND - Softsound, Ltd."},
    {0x0081, L"WAVE_FORMAT_VOXWARE_TQ60 - Voxware Inc"},
    {0x0082, L"WAVE_FORMAT_MSRT24 - Microsoft Corporation"},
    {0x0083, L"WAVE_FORMAT_G729A - AT&T Labs, Inc."},
    {0x0084, L"WAVE_FORMAT_MVI_MVI2 - Motion Pixels"},
    {0x0085, L"WAVE_FORMAT_DF_G726 - DataFusion Systems (Pty) (Ltd)"},
    {0x0086, L"WAVE_FORMAT_DF_GSM610 - DataFusion Systems (Pty) (Ltd)"},
    {0x0088, L"WAVE_FORMAT_ISIAUDIO - Iterated Systems, Inc."},
    {0x0089, L"WAVE_FORMAT_ONLIVE - OnLive! Technologies, Inc."},
    {0x0091, L"WAVE_FORMAT_SBC24 - Siemens Business Communications Sys"},
    {0x0092, L"WAVE_FORMAT_DOLBY_AC3_SPDIF - Sonic Foundry"},
    {0x0093, L"WAVE_FORMAT_MEDIASONIC_G723 - MediaSonic"},
    {0x0094, L"WAVE_FORMAT_PROSODY_8KBPS - Aculab plc"},
    {0x0097, L"WAVE_FORMAT_ZYXEL_ADPCM - ZyXEL Communications, Inc."},
    {0x0098, L"WAVE_FORMAT_PHILIPS_LPCBB - Philips Speech Processing"},
    {0x0099, L"WAVE_FORMAT_PACKED - Studer Professional Audio AG"},
    {0x00A0, L"WAVE_FORMAT_MALDEN_PHONYTALK - Malden Electronics Ltd."},
    {0x0100, L"WAVE_FORMAT_RHETOREX_ADPCM - Rhetorex Inc."},
    {0x0101, L"WAVE_FORMAT_IRAT - BeCubed Software Inc."},
    {0x0111, L"WAVE_FORMAT_VIVO_G723 - Vivo Software"},
    {0x0112, L"WAVE_FORMAT_VIVO_SIREN - Vivo Software"},
    {0x0123, L"WAVE_FORMAT_DIGITAL_G723 - Digital Equipment Corporation"},
    {0x0125, L"WAVE_FORMAT_SANYO_LD_ADPCM - Sanyo Electric Co., Ltd."},
    {0x0130, L"WAVE_FORMAT_SIPROLAB_ACEPLNET - Sipro Lab Telecom Inc."},
    {0x0131, L"WAVE_FORMAT_SIPROLAB_ACELP4800 - Sipro Lab Telecom Inc."},
    {0x0132, L"WAVE_FORMAT_SIPROLAB_ACELP8V3 - Sipro Lab Telecom Inc."},
    {0x0133, L"WAVE_FORMAT_SIPROLAB_G729 - Sipro Lab Telecom Inc."},
    {0x0134, L"WAVE_FORMAT_SIPROLAB_G729A - Sipro Lab Telecom Inc."},
    {0x0135, L"WAVE_FORMAT_SIPROLAB_KELVIN - Sipro Lab Telecom Inc."},
    {0x0140, L"WAVE_FORMAT_G726ADPCM - Dictaphone Corporation"},
    {0x0150, L"WAVE_FORMAT_QUALCOMM_PUREVOICE - Qualcomm, Inc."},
    {0x0151, L"WAVE_FORMAT_QUALCOMM_HALFRATE - Qualcomm, Inc."},
    {0x0155, L"WAVE_FORMAT_TUBGSM - Ring Zero Systems, Inc."},
    {0x0160, L"WAVE_FORMAT_MSAUDIO1 - Microsoft Corporation"},
    {0x0170, L"WAVE_FORMAT_UNISYS_NAP_ADPCM - Unisys Corp."},
    {0x0171, L"WAVE_FORMAT_UNISYS_NAP_ULAW - Unisys Corp."},
    {0x0172, L"WAVE_FORMAT_UNISYS_NAP_ALAW - Unisys Corp."},
    {0x0173, L"WAVE_FORMAT_UNISYS_NAP_16K - Unisys Corp."},
    {0x0200, L"WAVE_FORMAT_CREATIVE_ADPCM - Creative Labs, Inc"},
    {0x0202, L"WAVE_FORMAT_CREATIVE_FASTSPEECH8 - Creative Labs, Inc"},
    {0x0203, L"WAVE_FORMAT_CREATIVE_FASTSPEECH10 - Creative Labs, Inc"},
    {0x0210, L"WAVE_FORMAT_UHER_ADPCM - UHER informatic GmbH"},
    {0x0220, L"WAVE_FORMAT_QUARTERDECK - Quarterdeck Corporation"},
    {0x0230, L"WAVE_FORMAT_ILINK_VC - I-link Worldwide"},
    {0x0240, L"WAVE_FORMAT_RAW_SPORT - Aureal Semiconductor"},
    {0x0241, L"WAVE_FORMAT_ESST_AC3 - ESS Technology, Inc."},
    {0x0250, L"WAVE_FORMAT_IPI_HSX - Interactive Products, Inc."},
    {0x0251, L"WAVE_FORMAT_IPI_RPELP - Interactive Products, Inc."},
    {0x0260, L"WAVE_FORMAT_CS2 - Consistent Software"},
    {0x0270, L"WAVE_FORMAT_SONY_SCX - Sony Corp."},
    {0x0300, L"WAVE_FORMAT_FM_TOWNS_SND - Fujitsu Corp."},
    {0x0400, L"WAVE_FORMAT_BTV_DIGITAL - Brooktree Corporation"},
    {0x0450, L"WAVE_FORMAT_QDESIGN_MUSIC - QDesign Corporation"},
    {0x0680, L"WAVE_FORMAT_VME_VMPCM - AT&T Labs, Inc."},
    {0x0681, L"WAVE_FORMAT_TPC - AT&T Labs, Inc."},
    {0x1000, L"WAVE_FORMAT_OLIGSM - Ing C. Olivetti & C., S.p.A."},
    {0x1001, L"WAVE_FORMAT_OLIADPCM - Ing C. Olivetti & C., S.p.A."},
    {0x1002, L"WAVE_FORMAT_OLICELP - Ing C. Olivetti & C., S.p.A."},
    {0x1003, L"WAVE_FORMAT_OLISBC - Ing C. Olivetti & C., S.p.A."},
    {0x1004, L"WAVE_FORMAT_OLIOPR - Ing C. Olivetti & C., S.p.A."},
    {0x1100, L"WAVE_FORMAT_LH_CODEC - Lernout & Hauspie"},
    {0x1400, L"WAVE_FORMAT_NORRIS - Norris Communications, Inc."},
    {0x1500, L"WAVE_FORMAT_SOUNDSPACE_MUSICOMPRESS - AT&T Labs, Inc."},
    {0x2000, L"WAVE_FORMAT_DVM - FAST Multimedia AG"},
};

constexpr bool IsAscending() {
  return std::ranges::adjacent_find(kFormats, std::greater_equal(), &RegisteredFormat::tag) ==
         std::end(kFormats);
}
static_assert(IsAscending(), "it is searched by halves");

}  // namespace

std::wstring_view WaveFormatName(std::uint32_t tag) noexcept {
  const RegisteredFormat* const found =
      std::ranges::lower_bound(kFormats, tag, std::less(), &RegisteredFormat::tag);
  const bool isKnown = found != std::end(kFormats) && found->tag == tag;
  return isKnown ? found->name : L"Unknown format";
}

}  // namespace Quorvex
