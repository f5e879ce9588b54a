#include "pdf/document.h"

#include <gtest/gtest.h>

#include <functional>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include "files.h"
#include "support.h"

namespace trellion::pdf {
namespace {

using trellion::testing::one_page;
using trellion::testing::pdf_of;
using trellion::testing::scratch_directory;
using trellion::testing::stream;
using trellion::testing::triangles;

/// A document before and after its repair.
struct repaired_document {
  explicit repaired_document(const std::string& bytes) : before(bytes) {
    const scratch_directory directory;
    directory.write("in.pdf", bytes);
    summary = repair_document(directory.path() / "in.pdf", directory.path() / "out.pdf", {});
    after = directory.read("out.pdf");
  }

  std::string before;
  std::string after;
  document_summary summary;
};

void open(QPDF& document, const std::string& bytes) {
  document.processMemoryFile("result", bytes.data(), bytes.size());
}

std::string text_of(QPDFObjectHandle object) {
  const std::shared_ptr<Buffer> data = object.getStreamData();
  return {reinterpret_cast<const char*>(data->getBuffer()), data->getSize()};
}

/// The document as another program would organise it.
std::string rewritten(const std::string& bytes, const std::function<void(QPDFWriter&)>& organise) {
  QPDF document;
  open(document, bytes);
  QPDFWriter writer(document);
  writer.setOutputMemory();
  organise(writer);
  writer.write();
  const std::unique_ptr<Buffer> result(writer.getBuffer());
  return {reinterpret_cast<const char*>(result->getBuffer()), result->getSize()};
}

std::string refusal_of(const std::string& bytes) {
  try {
    const repaired_document done(bytes);
  } catch (const refusal& refused) {
    return refused.what();
  }
  return "";
}

const std::string mesh_on_page = one_page("/Contents 4 0 R", {stream(triangles(50))});

TEST(document, contents_split_anywhere_are_one_and_all_else_stays) {
  const std::string text = triangles(50);
  const std::string metadata = "<x:xmpmeta/>  ";
  const repaired_document done(
      one_page("/Contents[4 0 R 5 0 R]/Annots[6 0 R]/Metadata 7 0 R/Tabs/S",
               {stream(text.substr(0, 9)), stream(text.substr(9)),
                "<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/Border[0 0 0]>>",
                stream(metadata, "/Type/Metadata/Subtype/XML")}));
  EXPECT_EQ(done.summary.polygons_read, 100);
  EXPECT_EQ(done.summary.polygons_left, 1);
  EXPECT_EQ(done.summary.streams_changed, 1);
  EXPECT_EQ(done.summary.bytes_written, done.after.size());
  EXPECT_LT(done.after.size(), done.before.size());
  QPDF result;
  open(result, done.after);
  QPDFObjectHandle page = result.getAllPages().at(0);
  EXPECT_EQ(page.getKey("/Contents").getArrayNItems(), 1);
  EXPECT_EQ(page.getKey("/Annots").getArrayItem(0).unparseResolved(),
            "<< /Border [ 0 0 0 ] /Rect [ 0 0 9 9 ] /Subtype /Link /Type /Annot >>");
  EXPECT_EQ(text_of(page.getKey("/Metadata")), metadata);
  EXPECT_FALSE(page.getKey("/Metadata").getDict().hasKey("/Filter"));
  EXPECT_TRUE(page.getKey("/Tabs").isName());
  EXPECT_EQ(result.getPDFVersion(), "1.7");
}

TEST(document, is_copied_when_nothing_is_gained) {
  const std::string cut = "x\x9c\xcb";
  for (const std::string& bytes :
       {one_page("/Contents 4 0 R", {stream("0 0 m 1 0 l 1 1 l h f\n")}), one_page("", {}),
        one_page("/Contents 4 0 R", {stream(triangles(50), "/Filter/NoneSuch")}),
        one_page("/Contents[4 0 R 5 0 R]",
                 {stream(triangles(50)), stream(cut, "/Filter/FlateDecode")})}) {
    const repaired_document done(bytes);
    EXPECT_EQ(done.after, done.before);
    EXPECT_EQ(done.summary.streams_changed, 0);
    EXPECT_EQ(done.summary.polygons_left, done.summary.polygons_read);
  }
}

TEST(document, stays_organised_as_it_is) {
  const std::string linear =
      rewritten(mesh_on_page, [](QPDFWriter& writer) { writer.setLinearization(true); });
  const std::string in_streams = rewritten(mesh_on_page, [](QPDFWriter& writer) {
    writer.setObjectStreamMode(qpdf_o_generate);
    writer.setCompressStreams(false);
  });
  const repaired_document lines(linear);
  const repaired_document objects(in_streams);
  QPDF result;
  open(result, lines.after);
  EXPECT_TRUE(result.isLinearized());
  EXPECT_EQ(lines.summary.streams_changed, 1);
  EXPECT_NE(objects.after.find("/ObjStm"), std::string::npos);
  EXPECT_EQ(mesh_on_page.find("/ObjStm"), std::string::npos);
  EXPECT_EQ(repaired_document(mesh_on_page).after, repaired_document(mesh_on_page).after);
}

TEST(document, pages_that_draw_the_same_are_repaired_once) {
  const auto two_pages = [](const std::string& second) {
    return pdf_of({"<</Type/Catalog/Pages 2 0 R>>",
                   "<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2/MediaBox[0 0 9 9]>>",
                   "<</Type/Page/Parent 2 0 R/Contents 5 0 R/Resources<</Font<<>>>>>>",
                   "<</Type/Page/Parent 2 0 R/Contents 5 0 R/Resources<<" + second + ">>>>",
                   stream(triangles(50))});
  };
  const repaired_document same(two_pages("/Font<<>>"));
  EXPECT_EQ(same.summary.streams_changed, 1);
  QPDF result;
  open(result, same.after);
  std::vector<QPDFObjectHandle> pages = result.getAllPages();
  EXPECT_EQ(pages.at(0).getKey("/Contents").getObjGen(),
            pages.at(1).getKey("/Contents").getObjGen());
  // The names in one text may stand for different things: a second copy would be no gain.
  EXPECT_EQ(repaired_document(two_pages("")).summary.streams_changed, 0);
}

const std::string form_keys = "/Type/XObject/Subtype/Form/BBox[0 0 99 99]";

TEST(document, a_form_is_repaired_once_however_often_it_is_drawn) {
  const repaired_document done(one_page(
      "/Contents 4 0 R/Resources<</XObject<</A 5 0 R/B 6 0 R/D 7 0 R>>>>",
      {stream("/A Do /A Do /B Do /D Do"),
       stream(triangles(50), form_keys + "/Resources<<>>/Key 7/DL 9999"),
       stream("/C Do", form_keys + "/Resources<</XObject<</C 5 0 R>>>>/Matrix[2 0 0 2 0 0]"),
       // Of the names that it has not it uses none: what is drawn so is said in its text alone.
       stream(triangles(50) + "BT (Do) Tj ET", form_keys)}));
  EXPECT_EQ(done.summary.streams_changed, 2);
  EXPECT_EQ(done.summary.polygons_read, 200);
  QPDF result;
  open(result, done.after);
  QPDFObjectHandle form = QPDFObjectHandle(result.getAllPages().at(0))
                              .getKey("/Resources")
                              .getKey("/XObject")
                              .getKey("/A");
  EXPECT_EQ(form.getDict().getKey("/Key").getIntValue(), 7);
  EXPECT_FALSE(form.getDict().hasKey("/DL")) << "the length before";
  EXPECT_LT(text_of(form).size(), 40U);
  EXPECT_EQ(done.summary.polygons_left, 2);
}

TEST(document, a_form_that_may_be_drawn_otherwise_stays) {
  const std::string draws_a = "/Resources<</XObject<</A 5 0 R>>>>";
  const std::string form = stream(triangles(50), form_keys + "/Resources<<>>");
  // The page draws it as if it were alone; what else there is makes the difference.
  const auto document = [&](const std::string& page_keys, const std::string& text,
                            const std::string& other) {
    return one_page("/Contents 4 0 R" + page_keys, {stream(text), form, other});
  };
  ASSERT_EQ(repaired_document(document(draws_a, "/A Do", "null")).summary.streams_changed, 1);
  const std::string with_b = "/Resources<</XObject<</A 5 0 R/B 6 0 R>>";
  for (const std::string& bytes :
       {document(draws_a + "/Annots[6 0 R]", "/A Do",
                 "<</Type/Annot/Subtype/Stamp/Rect[0 0 9 9]/AP<</N 5 0 R>>>>"),
        document(with_b + "/ExtGState<</G<</ca .5>>>>>>", "q /G gs /A Do Q /A Do", "null"),
        document(with_b + "/ExtGState<</G<</SMask<</S/Alpha/G 5 0 R>>>>>>>>", "/A Do", "null"),
        document(with_b + ">>", "/A Do /B Do", stream("/A Do", form_keys)),
        document(with_b + ">>", "/A Do /B Do",
                 stream("/A Do /B Do", form_keys + "/Resources<</XObject<</A 5 0 R/B 6 0 R>>>>")),
        document(with_b + ">>", "/A Do /B Do",
                 stream("/A Do", form_keys + draws_a + "/Filter/NoneSuch")),
        document("/Resources<</XObject<</A 5 0 R>>/Pattern<</P 6 0 R>>>>", "/A Do",
                 stream("/A Do", "/PatternType 1/PaintType 1" + draws_a)),
        document(draws_a, "/A Do ) ", "null")}) {
    const repaired_document done(bytes);
    EXPECT_EQ(done.after, done.before) << bytes;
  }
}

TEST(document, is_refused_when_it_cannot_be_read_or_somebody_would_mind) {
  const auto with_field = [](const std::string& field) {
    return pdf_of({"<</Type/Catalog/Pages 2 0 R/AcroForm<</Fields[4 0 R]>>>>",
                   "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                   "<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]/Contents 5 0 R>>",
                   "<</FT/Sig/T(a)" + field + ">>", stream(triangles(50))});
  };
  EXPECT_EQ(refusal_of(with_field("/V<</ByteRange[0 1 2 3]/Contents<00>>>")), "it is signed");
  EXPECT_EQ(refusal_of(with_field("/V<</Type/Sig/Contents<00>>>")), "it is signed");
  EXPECT_EQ(refusal_of(with_field("")), "") << "nobody has signed yet";

  const auto locked = [](const char* user, bool may_change) {
    return rewritten(mesh_on_page, [=](QPDFWriter& writer) {
      writer.setCompressStreams(false);
      writer.setR6EncryptionParameters(user, "owner", true, true, true, true, true, may_change,
                                       qpdf_r3p_full, true);
    });
  };
  EXPECT_EQ(refusal_of(locked("user", true)), "it needs a password");
  EXPECT_EQ(refusal_of(locked("", false)), "its owner forbids changes");
  const repaired_document changed(locked("", true));
  EXPECT_EQ(changed.summary.streams_changed, 1);
  QPDF result;
  open(result, changed.after);
  EXPECT_TRUE(result.isEncrypted());
  EXPECT_TRUE(result.allowModifyOther());

  EXPECT_EQ(refusal_of(""), "it is no PDF file");
  EXPECT_EQ(refusal_of("%!PS-Adobe-3.0 EPSF-3.0\n"), "it is no PDF file");
  const std::string cut = mesh_on_page.substr(0, mesh_on_page.size() / 2);
  EXPECT_TRUE(refusal_of(cut).starts_with("it is damaged beyond repair")) << refusal_of(cut);
  const auto with_page_key = [](const std::string& key) {
    return one_page(key + "/Contents[4 0 R 4 0 R]",
                    {stream(triangles(50)), stream("?", "/Filter/FlateDecode")});
  };
  EXPECT_TRUE(refusal_of(with_page_key("/Tabs )")).starts_with("it is damaged")) << "in a page";
  EXPECT_EQ(refusal_of(with_page_key("/Thumb 5 0 R")), "") << "what is not read stays";
  const std::string no_table = mesh_on_page.substr(0, mesh_on_page.rfind("startxref"));
  EXPECT_EQ(repaired_document(no_table).summary.polygons_left, 1);
}

}  // namespace
}  // namespace trellion::pdf
