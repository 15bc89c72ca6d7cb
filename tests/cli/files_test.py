#!/usr/bin/env python3
"""What the command line does to files that stand where it writes, and how it ends when it is stopped.

Each test works in an empty folder of its own that holds trial.csv.
"""

import os
import pathlib
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = None
TRIAL = "t,e,x\n1,1,0.5\n2,0,1.5\n3,1,2.5\n4,1,0.25\n5,0,1\n6,1,3\n7,1,0.75\n8,0,2\n"
COX = ["cox", "trial.csv", "--time", "t", "--event", "e", "--covariates", "x"]
LIFE = ["life", "trial.csv", "--time", "t", "--event", "e"]
BASELINE_HEAD = "stratum,time,"
PATIENCE = 30  # seconds until a program that ought to have ended is taken for stuck


class Files(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        (self.folder / "trial.csv").write_text(TRIAL)

    def run_it(self, *arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        return subprocess.run(
            [PROGRAM, *arguments],
            stderr=subprocess.PIPE,
            cwd=self.folder,
            text=True,
            timeout=PATIENCE,
            check=False,
            **options,
        )

    def start(self, *arguments, **options):
        process = subprocess.Popen(
            [PROGRAM, *arguments],
            stdout=options.pop("stdout", subprocess.DEVNULL),
            stderr=subprocess.DEVNULL,
            cwd=self.folder,
            **options,
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def read_fifo(self, name, process, most=None):
        """What the process writes into a FIFO, until it ends or there are `most` bytes."""
        text = b""
        descriptor = os.open(self.folder / name, os.O_RDONLY | os.O_NONBLOCK)
        try:
            end = time.monotonic() + PATIENCE
            while time.monotonic() < end and (most is None or len(text) < most):
                ended = process.poll() is not None
                try:
                    part = os.read(descriptor, most or 1 << 16)
                except BlockingIOError:
                    part = b""
                text += part
                if ended and not part:
                    break
                if not part:
                    time.sleep(0.01)
        finally:
            os.close(descriptor)
        return text.decode()

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def text(self, name):
        return (self.folder / name).read_text()

    def refused(self, result, code, message):
        self.assertEqual((result.stdout, result.stderr, result.returncode), ("", message, code))

    # What stands at the path.

    def test_a_device_is_written_to_and_stays_a_device(self):
        device = "/dev/full"
        if os.geteuid() == 0:
            device = "full"  # the same device, where nothing depends on it
            try:
                os.mknod(self.folder / device, stat.S_IFCHR | 0o666, os.makedev(1, 7))
                os.close(os.open(self.folder / device, os.O_WRONLY))
            except OSError as error:
                self.skipTest(f"no device can be made here: {error}")
        result = self.run_it(*COX, "--baseline", device)
        self.refused(
            result,
            1,
            f"survmeth cox: {device}: cannot be written: No space left on device\n",
        )
        self.assertTrue(stat.S_ISCHR(os.stat(self.folder / device).st_mode))

    def test_a_fifo_is_written_to(self):
        os.mkfifo(self.folder / "fifo")
        process = self.start(*COX, "--baseline", "fifo")
        self.assertTrue(self.read_fifo("fifo", process).startswith(BASELINE_HEAD))
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertTrue(stat.S_ISFIFO(os.stat(self.folder / "fifo").st_mode))

    def test_a_process_substitution_is_written_to(self):
        script = '"$0" cox trial.csv --time t --event e --covariates x --baseline >(cat >copy; : >done)'
        result = subprocess.run(
            ["bash", "-c", script, PROGRAM], cwd=self.folder, capture_output=True, text=True,
            timeout=PATIENCE, check=False,
        )
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        end = time.monotonic() + PATIENCE
        while not (self.folder / "done").exists() and time.monotonic() < end:
            time.sleep(0.01)
        self.assertTrue(self.text("copy").startswith(BASELINE_HEAD))

    def test_dev_stdout_and_the_text_both_reach_standard_output(self):
        # Through a link, so that a program that replaces what it finds leaves the device alone.
        (self.folder / "printed").symlink_to("/dev/stdout")
        result = self.run_it(*COX, "--baseline", "printed")
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        self.assertTrue(result.stdout.startswith(BASELINE_HEAD))
        text = self.run_it(*COX, "--baseline", "elsewhere.csv").stdout
        self.assertTrue(text.startswith("Proportional-hazards regression\n"))
        self.assertTrue(result.stdout.endswith(text))

    def test_a_link_stays_and_what_it_leads_to_is_replaced(self):
        (self.folder / "there").mkdir()
        (self.folder / "there" / "real.csv").write_text("old")
        (self.folder / "link.csv").symlink_to("there/real.csv")
        self.assertEqual(self.run_it(*COX, "--baseline", "link.csv").returncode, 0)
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertTrue(self.text("there/real.csv").startswith(BASELINE_HEAD))
        self.assertEqual(os.listdir(self.folder / "there"), ["real.csv"])

    def test_a_link_to_nothing_yet_stays_and_gets_its_file(self):
        (self.folder / "link.csv").symlink_to("later.csv")
        self.assertEqual(self.run_it(*COX, "--baseline", "link.csv").returncode, 0)
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertTrue(self.text("later.csv").startswith(BASELINE_HEAD))

    def test_links_in_a_circle_are_refused(self):
        (self.folder / "a.csv").symlink_to("b.csv")
        (self.folder / "b.csv").symlink_to("a.csv")
        self.refused(
            self.run_it(*COX, "--baseline", "a.csv"),
            1,
            "survmeth cox: a.csv: cannot be written: Too many levels of symbolic links\n",
        )

    def test_a_replaced_file_keeps_its_mode(self):
        old = self.folder / "old.csv"
        old.write_text("old")
        old.chmod(0o640)
        self.assertEqual(self.run_it(*COX, "--baseline", "old.csv").returncode, 0)
        self.assertTrue(self.text("old.csv").startswith(BASELINE_HEAD))
        self.assertEqual(stat.S_IMODE(old.stat().st_mode), 0o640)

    def test_a_file_without_write_permission_is_refused_before_the_input_is_read(self):
        for name in ("kept.csv", "link.csv"):
            kept = self.folder / "kept.csv"
            kept.write_text("kept")
            kept.chmod(0o444)
            if name == "link.csv":
                (self.folder / name).symlink_to("kept.csv")
            self.refused(
                self.run_it("cox", "absent.csv", *COX[2:], "--baseline", name),
                1,
                f"survmeth cox: {name}: cannot be written: Permission denied\n",
            )
            self.assertEqual(self.text("kept.csv"), "kept")
            kept.chmod(0o644)

    # One file in two parts.

    def test_the_input_is_not_written_over(self):
        (self.folder / "link.csv").symlink_to("trial.csv")
        os.link(self.folder / "trial.csv", self.folder / "hard.csv")
        (self.folder / "sub").mkdir()
        for name in ("trial.csv", "./trial.csv", "sub/../trial.csv", "link.csv", "hard.csv"):
            self.refused(
                self.run_it(*COX, "--residuals", name),
                2,
                f"survmeth cox: --residuals: {name} is the input; expected another place\n",
            )
        self.assertEqual(self.text("trial.csv"), TRIAL)
        with open(self.folder / "trial.csv", encoding="utf-8") as data:
            result = self.run_it("cox", "-", *COX[2:], "--residuals", "trial.csv", stdin=data)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(self.text("trial.csv"), TRIAL)

    def test_the_input_in_the_folder_of_the_files_is_not_written_over(self):
        os.rename(self.folder / "trial.csv", self.folder / "summary.csv")
        self.refused(
            self.run_it("life", "summary.csv", *LIFE[2:], "--out", "."),
            2,
            "survmeth life: --out: ./summary.csv is the input; expected another place\n",
        )
        self.assertEqual(self.text("summary.csv"), TRIAL)

    def test_one_file_for_two_outputs_is_refused(self):
        for first, second in (("a.csv", "a.csv"), ("a.csv", "./a.csv"), ("link.csv", "a.csv")):
            if first == "link.csv":
                (self.folder / first).symlink_to("a.csv")
            result = self.run_it(*COX, "--residuals", first, "--baseline", second)
            self.refused(
                result,
                2,
                f"survmeth cox: --baseline: {second} is also the file of --residuals; "
                "expected another place\n",
            )
            self.assertFalse((self.folder / "a.csv").exists())

    def test_the_file_of_standard_output_is_not_replaced(self):
        with open(self.folder / "all.txt", "w", encoding="utf-8") as output:
            result = self.run_it(*COX, "--baseline", "all.txt", stdout=output)
        self.assertEqual(
            (result.stderr, result.returncode),
            (
                "survmeth cox: --baseline: all.txt is where standard output goes; "
                "expected another place\n",
                2,
            ),
        )

    def test_standard_output_is_not_added_to_the_input(self):
        with open(self.folder / "trial.csv", "a", encoding="utf-8") as output:
            result = self.run_it(*COX, stdout=output)
        self.assertEqual(
            (result.stderr, result.returncode),
            (
                "survmeth cox: standard output goes into the input trial.csv; "
                "expected another place\n",
                2,
            ),
        )
        self.assertEqual(self.text("trial.csv"), TRIAL)

    def test_dev_null_may_be_given_twice(self):
        (self.folder / "null").symlink_to("/dev/null")
        result = self.run_it(*COX, "--residuals", "null", "--baseline", "null")
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        self.assertTrue((self.folder / "null").is_symlink())

    # Readers that go away, and signals.

    def test_a_reader_that_goes_away_stops_no_file(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            result = self.run_it(*COX, "--baseline", "base.csv", stdout=writer)
        finally:
            os.close(writer)
        self.assertEqual((result.stderr, result.returncode), ("", -signal.SIGPIPE))
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))
        self.assertEqual(self.names(), ["base.csv", "trial.csv"])

    def test_a_closed_pipe_is_said_where_its_signal_is_ignored(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            result = self.run_it(
                *COX, "--baseline", "base.csv", stdout=writer, restore_signals=False
            )
        finally:
            os.close(writer)
        self.assertEqual(
            (result.stderr, result.returncode),
            ("survmeth cox: standard output: cannot be written: Broken pipe\n", 1),
        )
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))

    def test_a_fifo_whose_reader_goes_away_stops_no_other_file(self):
        # Enough rows that the writer still writes when the reader has gone.
        rows = "".join(f"{i % 50 + 1},{i % 2},{i % 7}\n" for i in range(1, 40001))
        (self.folder / "trial.csv").write_text("t,e,x\n" + rows)
        os.mkfifo(self.folder / "fifo")
        process = subprocess.Popen(
            [PROGRAM, *COX, "--residuals", "fifo", "--baseline", "base.csv"],
            cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )
        self.addCleanup(process.kill)
        self.assertEqual(len(self.read_fifo("fifo", process, 10)), 10)
        output, messages = process.communicate(timeout=PATIENCE)
        self.assertIn("x", output)
        self.assertEqual(messages, "survmeth cox: fifo: cannot be written: Broken pipe\n")
        self.assertEqual(process.returncode, 1)
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))

    def test_a_signal_leaves_nothing_and_ends_the_program(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            with self.subTest(number.name):
                if not (self.folder / "fifo").exists():
                    os.mkfifo(self.folder / "fifo")
                # Waits for somebody to read the FIFO, the other file made under another name.
                process = self.start(*COX, "--baseline", "base.csv", "--residuals", "fifo")
                end = time.monotonic() + PATIENCE
                while len(self.names()) < 3 and time.monotonic() < end:
                    time.sleep(0.01)
                self.assertEqual(len(self.names()), 3, "nothing was made under another name")
                process.send_signal(number)
                self.assertEqual(process.wait(PATIENCE), -number)
                self.assertEqual(self.names(), ["fifo", "trial.csv"])

    def test_a_signal_takes_new_folders_away(self):
        os.mkfifo(self.folder / "fifo.svg")
        gnuplot = self.folder / "gnuplot"
        gnuplot.write_text("#!/bin/sh\necho picture\n")
        gnuplot.chmod(0o755)
        process = self.start(
            *LIFE, "--out", "new/results", "--plot", "fifo.svg",
            env={**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}"},
        )
        end = time.monotonic() + PATIENCE
        results = self.folder / "new" / "results"
        while not (results.exists() and len(os.listdir(results)) == 3) and time.monotonic() < end:
            time.sleep(0.01)
        self.assertEqual(len(os.listdir(results)), 3)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(PATIENCE), -signal.SIGTERM)
        self.assertEqual(self.names(), ["fifo.svg", "gnuplot", "trial.csv"])

    def test_a_limit_on_the_size_of_files_leaves_nothing(self):
        # bash counts in KiB; the residuals of these rows take more than two.
        (self.folder / "trial.csv").write_text(
            "t,e,x\n" + "".join(f"{i},{i % 2},{i % 7}\n" for i in range(1, 201))
        )
        script = 'ulimit -c 0; ulimit -f 2; exec "$0" "$@"'
        result = subprocess.run(
            ["bash", "-c", script, PROGRAM, *COX, "--residuals", "r.csv"],
            cwd=self.folder, capture_output=True, timeout=PATIENCE, check=False,
        )
        self.assertEqual((result.stdout, result.returncode), (b"", -signal.SIGXFSZ))
        self.assertEqual(self.names(), ["trial.csv"])

    def test_a_signal_that_the_parent_ignores_stays_ignored(self):
        os.mkfifo(self.folder / "fifo")
        process = subprocess.Popen(
            ["bash", "-c", 'trap "" HUP; exec "$0" "$@"', PROGRAM, *COX, "--baseline", "base.csv",
             "--residuals", "fifo"],
            cwd=self.folder, stdout=subprocess.DEVNULL,
        )
        self.addCleanup(process.kill)
        end = time.monotonic() + PATIENCE
        while len(self.names()) < 3 and time.monotonic() < end:
            time.sleep(0.01)
        process.send_signal(signal.SIGHUP)
        self.read_fifo("fifo", process)
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))

    # A figure that cannot be drawn.

    def test_a_failing_gnuplot_takes_nothing_with_it(self):
        (self.folder / "bin").mkdir()
        gnuplot = self.folder / "bin" / "gnuplot"
        gnuplot.write_text("#!/bin/sh\necho 'no such terminal' >&2\nexit 3\n")
        gnuplot.chmod(0o755)
        (self.folder / "curves.svg").write_text("old")
        result = self.run_it(
            *LIFE, "--out", ".", "--plot", "curves.svg",
            env={**os.environ, "PATH": f"{self.folder}/bin:{os.environ['PATH']}"},
        )
        self.assertEqual(result.stdout, self.run_it(*LIFE).stdout)
        self.assertEqual(
            (result.stderr, result.returncode),
            ("survmeth life: the plot cannot be drawn: gnuplot failed: no such terminal\n", 1),
        )
        self.assertEqual(self.text("curves.svg"), "old")
        self.assertEqual(
            self.names(),
            ["atRisk.csv", "bin", "curves.svg", "kaplanMeier.csv", "summary.csv", "trial.csv"],
        )

    # Standard output that cannot be written.

    def test_a_full_standard_output_is_said(self):
        for arguments, who in (
            (["--help"], "survmeth"),
            (["--version"], "survmeth"),
            (["life", "--help"], "survmeth life"),
            (COX, "survmeth cox"),
        ):
            with open("/dev/full", "w", encoding="utf-8") as full:
                result = self.run_it(*arguments, stdout=full)
            self.assertEqual(
                (result.stderr, result.returncode),
                (f"{who}: standard output: cannot be written: No space left on device\n", 1),
            )

    def test_a_full_standard_output_takes_no_file_with_it(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = self.run_it(*COX, "--baseline", "base.csv", stdout=full)
        self.assertEqual(result.returncode, 1)
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))

    def test_a_standard_output_that_is_not_open_is_said(self):
        result = subprocess.run(
            ["bash", "-c", 'exec "$0" "$@" >&-', PROGRAM, *COX, "--baseline", "base.csv"],
            cwd=self.folder, capture_output=True, text=True, timeout=PATIENCE, check=False,
        )
        self.assertEqual(
            (result.stderr, result.returncode),
            ("survmeth cox: standard output: cannot be written: Bad file descriptor\n", 1),
        )
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
