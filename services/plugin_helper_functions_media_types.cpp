// The sets of file extensions that tell images, audio and video.
#include "services/plugin_helper_functions.h"

namespace {

// An extension may stand in two sets: ".mpg" is video and, as a sound track, audio.
// clang-format off
constexpr const char *image_extension_rows[] = {
    ".001", ".2bp", ".36", ".360", ".3fr", ".411", ".73i", ".8pbs", ".8xi",
    ".abm", ".accountpicture-ms", ".acorn", ".acr", ".adc", ".af", ".afphoto", ".afx", ".agif", ".agp", ".ai", ".aic", ".ais", ".ami", ".ani", ".apd", ".apm", ".apng", ".aps", ".apx", ".ari", ".arr", ".art", ".arw", ".asw", ".avatar", ".avif", ".avifs", ".awd",
    ".bay", ".bif", ".bil", ".bimx", ".blp", ".bm2", ".bmf", ".bmp", ".bmq", ".bmx", ".bmz", ".bpg", ".brk", ".brn", ".brt", ".bss", ".bti", ".bw",
    ".cal", ".cals", ".cam", ".can", ".cap", ".cd5", ".cdc", ".cdg", ".cdr", ".ce", ".cgm", ".cimg", ".cin", ".cit", ".clip", ".cmx", ".colz", ".cpc", ".cpd", ".cpg", ".cps", ".cpt", ".cpx", ".cr2", ".cr3", ".crw", ".cs1", ".csl", ".cur", ".cut", ".cv5",
    ".dc2", ".dcm", ".dcr", ".dcs", ".dcx", ".ddb", ".dds", ".ddt", ".dib", ".dicom", ".djv", ".djvu", ".dm3", ".dng", ".dpx", ".drf", ".drz", ".dt2", ".dtw", ".dxf",
    ".ecw", ".eip", ".emf", ".emz", ".eps", ".epsf", ".epsi", ".eri", ".erf", ".exif", ".exr",
    ".face", ".fac", ".fal", ".fbm", ".fff", ".fit", ".fits", ".flif", ".fpg", ".fpx", ".fs", ".fts",
    ".g3", ".gbr", ".gfb", ".gfie", ".ggr", ".gif", ".gim", ".gmbck", ".gp4", ".gpr", ".gro", ".gry",
    ".hdp", ".hdr", ".hdrp", ".heic", ".heics", ".heif", ".heifs", ".hf", ".hif", ".hpi", ".hr", ".hrf",
    ".ic1", ".ic2", ".ic3", ".ica", ".icb", ".icn", ".icns", ".ico", ".icon", ".icpr", ".iff", ".ilbm", ".imj", ".ind", ".info", ".ingr", ".int", ".ipick", ".ipx", ".itc2", ".ithmb", ".ivr", ".iwi", ".iiq",
    ".j", ".j2c", ".j2k", ".jas", ".jb2", ".jbf", ".jbig", ".jbig2", ".jbr", ".jfi", ".jfif", ".jif", ".jng", ".jp2", ".jpc", ".jpe", ".jpeg", ".jpf", ".jpg", ".jpg2", ".jpm", ".jps", ".jpx", ".jxl", ".jxr", ".jtf", ".jwl",
    ".k25", ".kdc", ".kdi", ".kdk", ".kfx", ".kic", ".kodak", ".kpg", ".kra",
    ".lb", ".lbm", ".lif", ".ljp", ".lrpreview", ".lzp", ".lip",
    ".mac", ".max", ".mbm", ".mcs", ".mdc", ".mef", ".met", ".mfw", ".mic", ".mip", ".miff", ".mix", ".mng", ".mnr", ".mos", ".mpf", ".mpo", ".mrb", ".mrw", ".mrxs", ".msk", ".msp", ".mxi", ".myl",
    ".ncd", ".ncr", ".nct", ".nef", ".neo", ".nlm", ".nrw",
    ".oc3", ".oc4", ".oc5", ".oci", ".odg", ".odi", ".omf", ".oplc", ".ora", ".orf", ".ota", ".otb", ".ozb", ".ozj", ".ozt",
    ".pac", ".pal", ".pano", ".pap", ".pat", ".pbm", ".pc1", ".pc2", ".pc3", ".pcd", ".pct", ".pcx", ".pdd", ".pdn", ".pef", ".pfi", ".pfm", ".pfr", ".pfs", ".pgf", ".pgm", ".pi1", ".pi2", ".pi3", ".pic", ".picnc", ".pict", ".pictclipping", ".pix", ".pixadex", ".pjpeg", ".pjpg", ".pm", ".pmg", ".png", ".pni", ".pnm", ".pns", ".pnt", ".pntg", ".pov", ".pp4", ".ppf", ".ppm", ".procreate", ".prw", ".psb", ".psd", ".psdx", ".psf", ".psp", ".pspbrush", ".pspimage", ".ptg", ".ptk", ".ptx", ".pvr", ".pwp", ".px", ".pxd", ".pxm", ".pxr", ".pyxel", ".pza", ".pzp",
    ".qif", ".qmg", ".qti", ".qtif",
    ".raf", ".ras", ".raw", ".rcl", ".rcu", ".rgb", ".rgba", ".rgbe", ".rgf", ".ric", ".rif", ".riff", ".rix", ".rle", ".rli", ".rpf", ".rri", ".rs", ".rsb", ".rsr", ".rw2", ".rwl",
    ".s2mv", ".sai", ".sar", ".sbp", ".scg", ".sci", ".scn", ".sct", ".scu", ".sdr", ".sff", ".sfc", ".sfw", ".sgi", ".sham", ".sid", ".sig", ".sim", ".skitch", ".skm", ".sld", ".smp", ".sob", ".spa", ".spe", ".spiff", ".spp", ".spr", ".spu", ".sr", ".sr2", ".srf", ".srw", ".ste", ".sumo", ".sun", ".suniff", ".sup", ".sva", ".svg", ".svgz", ".svs",
    ".t2b", ".taac", ".targa", ".tb0", ".tbn", ".tex", ".tfc", ".tg4", ".tga", ".thm", ".thumb", ".tif", ".tiff", ".tjp", ".tm2", ".tn", ".tn1", ".tn2", ".tn3", ".tny", ".tpf", ".tpi", ".tps", ".trif",
    ".u", ".uei", ".uga", ".ugoira", ".upf", ".urt", ".usertile-ms",
    ".v", ".vda", ".vff", ".vic", ".vicar", ".vif", ".viff", ".vna", ".vpe", ".vrimg", ".vrphoto", ".vsd", ".vss", ".vst",
    ".wb0", ".wb1", ".wb2", ".wbc", ".wbd", ".wbm", ".wbmp", ".wbz", ".wdp", ".webp", ".wi", ".wic", ".wmf", ".wmp", ".wmz", ".wpb", ".wpe", ".wpg", ".wvl",
    ".x3f", ".xbm", ".xcf", ".xif", ".xpm", ".xv", ".xwd",
    ".y", ".ysp", ".yuv",
    ".zif", ".zno", ".zvi",
};

constexpr const char *audio_extension_rows[] = {
    ".2sf", ".2sflib", ".3ga", ".4mp", ".669", ".6cm", ".8cm", ".8med", ".8svx",
    ".a2b", ".a2i", ".a2m", ".a52", ".aa", ".aa3", ".aac", ".aax", ".ab", ".abc", ".ac3", ".acd", ".acm", ".act", ".adg", ".adt", ".adts", ".adx", ".afc", ".agm", ".ahx", ".aif", ".aifc", ".aiff", ".akp", ".al", ".alac", ".alaw", ".alc", ".all", ".als", ".amf", ".amr", ".ams", ".amxd", ".ape", ".apl", ".aria", ".asd", ".at3", ".atrac", ".au", ".aud", ".aup", ".avr", ".awb", ".ay",
    ".b4s", ".band", ".bap", ".bcs", ".bdd", ".bidule", ".bnk", ".bonk", ".brstm", ".bun", ".bwf", ".bwg",
    ".caf", ".caff", ".cda", ".cdda", ".cdo", ".cdr", ".cel", ".cfa", ".cgrp", ".cidb", ".ckb", ".conform", ".copy", ".cpr", ".cpt", ".csh", ".cts", ".cwb", ".cwp",
    ".d00", ".d01", ".dcf", ".dcm", ".dct", ".dff", ".dfc", ".dig", ".dls", ".dm", ".dmc", ".dmf", ".dmsa", ".drg", ".dsf", ".dsm", ".dsp", ".dss", ".dtm", ".dts", ".dtshd", ".dvf", ".dw", ".dwd",
    ".ear", ".efa", ".efe", ".emd", ".emp", ".emx", ".eop", ".esps", ".evr", ".evrc", ".exs",
    ".f2r", ".f32", ".f3r", ".f4a", ".f64", ".far", ".fdp", ".fev", ".flac", ".flp", ".fls", ".frg", ".fsb", ".fsm", ".ftm", ".fzf", ".fzv",
    ".g721", ".g723", ".g726", ".gbs", ".gig", ".gio", ".gm", ".gp5", ".gpbank", ".gpk", ".gpx", ".groove", ".gsf", ".gsflib", ".gsm", ".gym",
    ".h0", ".hbe", ".hca", ".hdp", ".hma", ".hmi", ".hsb", ".hes",
    ".iaa", ".ics", ".iff", ".igp", ".imf", ".imy", ".ins", ".isma", ".iti", ".itls", ".its", ".it",
    ".jam", ".jo", ".jspf",
    ".k25", ".k26", ".kar", ".kfn", ".kin", ".kit", ".kmp", ".koz", ".kpl", ".krz", ".ksc", ".ksf", ".kss", ".kt2", ".ktp",
    ".l", ".la", ".lof", ".logic", ".logicx", ".lqt", ".lso", ".lvp", ".lwv",
    ".m", ".m1a", ".m2a", ".m3u", ".m3u8", ".m4a", ".m4b", ".m4p", ".m4r", ".ma1", ".mbr", ".mdc", ".mdl", ".med", ".mgv", ".mid", ".midi", ".mini2sf", ".minigsf", ".minipsf", ".miniusf", ".mka", ".mlp", ".mmf", ".mmm", ".mmp", ".mod", ".mogg", ".mp1", ".mp2", ".mp3", ".mpa", ".mpc", ".mpdp", ".mpga", ".mpu", ".mscx", ".mscz", ".msv", ".mt2", ".mt9", ".mte", ".mti", ".mtm", ".mtp", ".mts", ".mus", ".mux", ".mx3", ".mx4", ".mx5", ".mxl", ".mxmf",
    ".narrative", ".nbs", ".ncw", ".nkb", ".nkc", ".nki", ".nkm", ".nks", ".nkx", ".nml", ".nmsv", ".note", ".npl", ".nra", ".nrt", ".nsa", ".nsf", ".nst", ".ntn", ".nvf", ".nwc",
    ".obw", ".odm", ".ofr", ".oga", ".ogg", ".okt", ".oma", ".omf", ".omg", ".omx", ".opus", ".orc", ".ots", ".ove", ".ovw",
    ".pac", ".pandora", ".pca", ".pcast", ".pcg", ".pcm", ".peak", ".pek", ".pho", ".phy", ".pk", ".pkf", ".pla", ".pls", ".ply", ".pna", ".ppc", ".ppcx", ".prg", ".psf", ".psf1", ".psf2", ".psm", ".psy", ".ptf", ".ptm", ".pts", ".ptx", ".pvc",
    ".q1", ".q2", ".qcp",
    ".r", ".r1m", ".ra", ".ram", ".rax", ".raw", ".rbs", ".rcy", ".rex", ".rf64", ".rfl", ".rgrp", ".rip", ".rmf", ".rmi", ".rmj", ".rmm", ".rmx", ".rng", ".rns", ".rol", ".rsn", ".rso", ".rta", ".rti", ".rtm", ".rts", ".rvx", ".rx2",
    ".s3i", ".s3m", ".s3z", ".saf", ".sam", ".sap", ".sb", ".sbg", ".sbi", ".sbk", ".sc2", ".sd", ".sd2", ".sd2f", ".sdat", ".sds", ".sdt", ".sdx", ".seg", ".seq", ".ses", ".sesx", ".sf", ".sf2", ".sfap0", ".sfk", ".sfl", ".sfs", ".sfz", ".shn", ".sib", ".sid", ".slp", ".slx", ".smf", ".smp", ".snd", ".sng", ".sou", ".sph", ".sppack", ".spx", ".sseq", ".ssnd", ".stap", ".stm", ".stx", ".sty", ".svd", ".svx", ".sw", ".swa", ".swav", ".sxt", ".syh", ".syn", ".syw", ".syx",
    ".tak", ".tau", ".td0", ".tfmx", ".tg", ".thx", ".tm2", ".tm8", ".tmc", ".toc", ".tsp", ".tta", ".txw",
    ".u", ".u8", ".uax", ".ub", ".ulaw", ".ult", ".ulw", ".uni", ".usf", ".usflib", ".ust", ".uw", ".uwf",
    ".v2m", ".vag", ".val", ".vap", ".vb", ".vc3", ".vdj", ".vgm", ".vgz", ".vip", ".vlc", ".vmd", ".vmf", ".voc", ".voi", ".vox", ".voxal", ".vpl", ".vpm", ".vpw", ".vqf", ".vrf", ".vsq", ".vsqx", ".vtx", ".vyf",
    ".w01", ".w64", ".wav", ".wave", ".wax", ".wem", ".wfb", ".wfd", ".wfm", ".wfp", ".wma", ".wow", ".wpk", ".wpp", ".wproj", ".wrk", ".wtpl", ".wtpt", ".wus", ".wut", ".wv", ".wvc", ".wve", ".wwu",
    ".xa", ".xfs", ".xi", ".xm", ".xmf", ".xmi", ".xms", ".xmu", ".xmz", ".xp", ".xpf", ".xrns", ".xsb", ".xspf", ".xt", ".xwb",
    ".ym", ".yookoo", ".zab", ".zpa", ".zpl", ".zvd", ".zvr",
};

constexpr const char *video_extension_rows[] = {
    ".264", ".265", ".3g2", ".3gp", ".3gp2", ".3gpp", ".3gpp2", ".3mm", ".3p2", ".60d", ".787",
    ".aaf", ".aec", ".aep", ".aepx", ".ajp", ".ale", ".am", ".amc", ".amv", ".amx", ".anim", ".anx", ".aqt", ".arcut", ".arf", ".asf", ".asx", ".avb", ".avc", ".avchd", ".avd", ".avi", ".avp", ".avs", ".avv", ".axm", ".axv",
    ".bdm", ".bdmv", ".bdt2", ".bdt3", ".bik", ".bin", ".bix", ".bmk", ".bnp", ".box", ".bs4", ".bsf", ".bu", ".bvr", ".byu",
    ".camproj", ".camrec", ".camv", ".ced", ".cel", ".cine", ".cip", ".clk", ".clpi", ".cmmp", ".cmproj", ".cmrec", ".cmv", ".cpi", ".cpvc", ".crec", ".cst", ".cvc", ".cx3",
    ".d2v", ".d3v", ".dash", ".dat", ".dav", ".dce", ".dck", ".dcr", ".ddat", ".dif", ".dir", ".divx", ".dlx", ".dmb", ".dmsd", ".dmsm", ".dmss", ".dmx", ".dnc", ".dpa", ".dpg", ".dream", ".dsy", ".dv", ".dvdmedia", ".dvr", ".dvr-ms", ".dvx", ".dxr", ".dzm", ".dzp", ".dzt",
    ".edl", ".evo", ".exo", ".eye", ".eyetv", ".ezt",
    ".f4p", ".f4v", ".fbr", ".fbz", ".fcp", ".fcproject", ".ffd", ".ffm", ".flc", ".flh", ".fli", ".flv", ".flx", ".fpdx", ".ftc",
    ".g64", ".gcs", ".gfp", ".gifv", ".gl", ".gom", ".grasp", ".gts", ".gvi", ".gvp", ".gxf",
    ".h264", ".h265", ".hdmov", ".hdv", ".hevc", ".hkm",
    ".ifo", ".imovieproj", ".insv", ".ismc", ".ismv", ".iva", ".ivf", ".ivr", ".ivs", ".jmv", ".jss", ".jts", ".k3g", ".kmv", ".kux",
    ".lrv", ".lsf", ".lsx", ".lvix",
    ".m1v", ".m21", ".m2p", ".m2t", ".m2ts", ".m2v", ".m4e", ".m4s", ".m4u", ".m4v", ".m75", ".mani", ".mj2", ".mjp", ".mjpeg", ".mjpg", ".mk3d", ".mkv", ".mmv", ".mnv", ".mob", ".modd", ".moff", ".moi", ".moov", ".mov", ".movie", ".mp21", ".mp2v", ".mp4", ".mp4v", ".mpe", ".mpeg", ".mpeg1", ".mpeg2", ".mpeg4", ".mpg", ".mpg2", ".mpgv", ".mpl", ".mpls", ".mpv", ".mpv2", ".mqv", ".mswmm", ".mt2s", ".mts", ".mtv", ".mvb", ".mvd", ".mve", ".mvp", ".mxf", ".mxv",
    ".nsv", ".nut", ".nuv", ".ogm", ".ogv", ".ogx", ".orv", ".pds", ".pgi", ".pmf", ".prel", ".pro", ".prproj", ".psh", ".pva", ".pvr", ".pxv",
    ".qt", ".qtz", ".r3d", ".rm", ".rmd", ".rmvb", ".roq", ".rv", ".rvl",
    ".scm", ".sfd", ".smi", ".smk", ".srt", ".stx", ".svi", ".swf", ".tod", ".tp", ".trec", ".trp", ".ts", ".ttxt", ".tvs",
    ".usm", ".vc1", ".vdr", ".veg", ".vfw", ".viv", ".vob", ".vp3", ".vp6", ".vp7", ".vp9", ".vro",
    ".webm", ".wlmp", ".wm", ".wmv", ".wmx", ".wtv", ".wvx", ".xesc", ".xvid", ".y4m", ".yuv", ".zm1", ".zmv",
};
// clang-format on

// Out: which of the 36 lists holds extensions that begin with this character; -1 when none does.
int list_index_of(QChar first)
{
    const ushort character = first.unicode();
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    return character >= 'a' && character <= 'z' ? 10 + character - 'a' : -1;
}

template <std::size_t Count>
void fill(std::array<QStringList, 36> &lists, const char *const (&rows)[Count])
{
    for (const char *row : rows) {
        const QString extension = QString::fromLatin1(row);
        lists[static_cast<std::size_t>(list_index_of(extension.at(1)))].append(extension);
    }
}

} // namespace

void plugin_helper_functions::initialize_image_extension_list()
{
    fill(image_extensions, image_extension_rows);
}

void plugin_helper_functions::initialize_audio_extension_list()
{
    fill(audio_extensions, audio_extension_rows);
}

void plugin_helper_functions::initialize_video_extension_list()
{
    fill(video_extensions, video_extension_rows);
}

bool plugin_helper_functions::check_is_image_by_extn(const QString &name) const
{
    return is_in_lists(image_extensions, name);
}

bool plugin_helper_functions::check_is_audio_by_extn(const QString &name) const
{
    return is_in_lists(audio_extensions, name);
}

bool plugin_helper_functions::check_is_video_by_extn(const QString &name) const
{
    return is_in_lists(video_extensions, name) || check_is_audio_by_extn(name);
}

bool plugin_helper_functions::is_in_lists(const extension_lists &lists, const QString &name) const
{
    const QString lowered = name.toLower().trimmed();
    const int dot = lowered.lastIndexOf(QLatin1Char('.'));
    if (name.endsWith(QLatin1Char('.')) || dot < 0 || dot + 1 == lowered.size()) {
        return false;
    }
    const QString extension = lowered.mid(dot);
    const int index = list_index_of(extension.at(1));
    if (index < 0) {
        return false;
    }
    for (const QString &entry : lists[static_cast<std::size_t>(index)]) {
        if (plugin_helper_cancel_bool) {
            return false;
        }
        if (entry == extension) {
            return true;
        }
    }
    return false;
}
