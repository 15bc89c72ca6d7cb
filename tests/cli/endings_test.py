#!/usr/bin/env python3
"""How the command line ends when it is stopped, nobody reads on, or there is no room."""

import os
import pty
import select
import signal
import subprocess
import time

from folder import BASELINE_HEAD, COX, LIFE, PATIENCE, Folder, run


class Endings(Folder):
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
            [self.program, *COX, "--residuals", "fifo", "--baseline", "base.csv"],
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

    def test_long_work_shows_that_it_goes_on_and_ends_on_control_c(self):
        # Data that come to a stop: nothing but the time moves.
        os.mkfifo(self.folder / "slow.csv")
        data = os.open(self.folder / "slow.csv", os.O_RDWR)
        self.addCleanup(os.close, data)
        os.write(data, b"t,e\n" + b"1,1\n" * 1000)
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.folder)
            os.execv(self.program, [self.program, "life", "slow.csv", "--time", "t", "--event", "e",
                                    "--out", "new"])
        self.addCleanup(os.close, terminal)
        shown = b""
        end = time.monotonic() + PATIENCE
        while b", 3 s" not in shown and time.monotonic() < end:
            if select.select([terminal], [], [], 0.1)[0]:
                shown += os.read(terminal, 1 << 16)
        os.write(terminal, b"\x03")
        _, status = os.waitpid(child, 0)
        self.assertIn(b"reading slow.csv", shown)
        self.assertIn(b", 3 s", shown)
        self.assertEqual(os.waitstatus_to_exitcode(status), -signal.SIGINT)
        self.assertEqual(self.names(), ["slow.csv", "trial.csv"])

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
            ["bash", "-c", script, self.program, *COX, "--residuals", "r.csv"],
            cwd=self.folder, capture_output=True, timeout=PATIENCE, check=False,
        )
        self.assertEqual((result.stdout, result.returncode), (b"", -signal.SIGXFSZ))
        self.assertEqual(self.names(), ["trial.csv"])

    def test_a_signal_that_the_parent_ignores_stays_ignored(self):
        os.mkfifo(self.folder / "fifo")
        process = subprocess.Popen(
            ["bash", "-c", 'trap "" HUP; exec "$0" "$@"', self.program, *COX, "--baseline", "base.csv",
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
            ["bash", "-c", 'exec "$0" "$@" >&-', self.program, *COX, "--baseline", "base.csv"],
            cwd=self.folder, capture_output=True, text=True, timeout=PATIENCE, check=False,
        )
        self.assertEqual(
            (result.stderr, result.returncode),
            ("survmeth cox: standard output: cannot be written: Bad file descriptor\n", 1),
        )
        self.assertTrue(self.text("base.csv").startswith(BASELINE_HEAD))


if __name__ == "__main__":
    run()
