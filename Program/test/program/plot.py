"""The plots as a user makes them; how they look is the business of Chromium's test."""
import os
import sys
import xml.etree.ElementTree

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program

FIGURES = ["shading", "distortion", "shift", "shading-over-clip", "distortion-over-clip", "round-trip",
           "residuals-over-clip", "grid-recorded", "grid-corrected"]
SVG = "{http://www.w3.org/2000/svg}svg"


class Plot(program.ProgramTest):
    def setUp(self):
        super().setUp()
        with open(self.path("a.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=range(1001, 1004), lensTypeName="<Zoom> & more"))

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()

    def test_writes_all_figures_into_one_picture(self):
        self.expect(self.run_program("plot", "a.olcf", "-o", "curves.svg"), 0, "", "")
        root = xml.etree.ElementTree.fromstring(self.read("curves.svg"))
        self.assertEqual([figure.get("id") for figure in root.iter(SVG) if figure.get("id")], FIGURES)

    def test_writes_a_page_that_needs_nothing_else(self):
        self.expect(self.run_program("plot", "a.olcf", "-o", "report.html"), 0, "", "")
        page = self.read("report.html")
        for word in ("<script", "src=", "href=", "url(", "@import"):
            self.assertNotIn(word, page)
        self.assertIn("<h1>Lens Maker &lt;Zoom&gt; &amp; more</h1>", page)

    def test_writes_the_same_text_again(self):
        self.run_program("plot", "a.olcf", "-o", "one.html")
        self.run_program("plot", "a.olcf", "-o", "two.html", environment={"LC_ALL": "de_DE.UTF-8", "TZ": "Asia/Tokyo"})
        self.assertEqual(self.read("one.html"), self.read("two.html"))

    def test_refuses_other_formats(self):
        self.expect(self.run_program("plot", "a.olcf", "-o", "curves.png"), 2, "",
                    "lenscorrect: curves.png: the output's name must end in .html or .svg.\n")

    def test_leaves_the_correction_file_alone_when_it_is_named_as_the_output(self):
        os.rename(self.path("a.olcf"), self.path("a.svg"))
        text = self.read("a.svg")
        self.expect(self.run_program("plot", "a.svg", "-o", "a.svg"), 2, "",
                    'lenscorrect: The output would replace its own input, "a.svg"; choose another output.\n')
        self.assertEqual(self.read("a.svg"), text)

    def test_says_why_there_is_nothing_to_plot(self):
        with open(self.path("b.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[]))
        self.expect(self.run_program("plot", "b.olcf", "-o", "b.svg"), 2, "",
                    'lenscorrect: b.olcf: there is no frame to plot. Run "lenscorrect check" on it for the reasons.\n')
        self.assertFalse(os.path.exists(self.path("b.svg")))


program.main()
