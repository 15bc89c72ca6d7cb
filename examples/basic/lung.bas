' Survival in the lung cancer data, as a macro: Kaplan-Meier curves by sex with their quartiles,
' means and comparison, then a Cox regression, all through libsurvival's flat arrays. The calls go
' through survival_shim.py; run.py runs the whole without a window.
Option Explicit

Const YES = -1    ' a flag is a short: Basic's True; 1 would be false
Const NO = 0
Const ALPHA = 0.05
Const MISSING = -1.79769313486231E+308

Private report As Integer    ' number of the file that the tables go to
Private shim As Object
Private nData As Long
' Columns of the data; an empty cell is MISSING, and male is 1, female 0.
Private dataTime() As Double, dataStatus() As Double, dataAge() As Double
Private dataMale() As Double, dataScore() As Double

Sub Main
  On Error GoTo Failed
  Dim scripts As Object
  report = FreeFile
  Open Environ("SURVMETH_OUTPUT") For Output As #report
  scripts = createUnoService("com.sun.star.script.provider.MasterScriptProviderFactory")
  shim = scripts.createScriptProvider("user").getScript( _
      "vnd.sun.star.script:survival_shim.py$call?language=Python&location=user")
  ReadData(Environ("SURVMETH_DATA"))
  KaplanMeier()
  Cox()
  Close #report
  Exit Sub
Failed:
  Print #report, "failed in line " & Erl & ": " & Error
  Close #report
End Sub

' ---- the library ----

' Calls an entry point. Its arguments, in `arguments`, come back as the call left them, arrays
' included.
Function CallLibrary(entryPoint As String, arguments As Variant) As Long
  Dim answer As Variant, i As Long
  answer = shim.invoke(Array(Environ("SURVMETH_LIBRARY"), entryPoint, arguments), Array(), Array())
  For i = 0 To UBound(arguments)
    arguments(i) = answer(i + 1)
  Next i
  CallLibrary = answer(0)
End Function

' Arrays of zeros; at least one element, also for a count of 0.
Function Reals(count As Long) As Variant
  Dim a() As Double
  ReDim a(IIf(count > 0, count - 1, 0))
  Reals = a
End Function

Function Integers(count As Long) As Variant
  Dim a() As Long
  ReDim a(IIf(count > 0, count - 1, 0))
  Integers = a
End Function

' Element (i, j), counted from 1, of a column-major array.
Function At(a As Variant, rows As Long, i As Long, j As Long) As Double
  At = a((i - 1) + (j - 1) * rows)
End Function

' ---- reading and showing ----

Function Cell(text As String) As Double
  If text = "" Then
    Cell = MISSING
  Else
    Cell = Val(text)
  End If
End Function

Sub ReadData(path As String)
  Dim source As Integer, textLine As String, cells As Variant
  ReDim dataTime(999), dataStatus(999), dataAge(999), dataMale(999), dataScore(999)
  nData = 0
  source = FreeFile
  Open path For Input As #source
  Line Input #source, textLine
  Do While Not Eof(source)
    Line Input #source, textLine
    If textLine <> "" Then
      cells = Split(textLine, ",")
      dataTime(nData) = Cell(cells(0))
      dataStatus(nData) = Cell(cells(1))
      dataAge(nData) = Cell(cells(2))
      dataMale(nData) = IIf(cells(3) = "male", 1, 0)
      dataScore(nData) = Cell(cells(4))
      nData = nData + 1
    End If
  Loop
  Close #source
End Sub

Function Padded(text As String, width As Long) As String
  Padded = Space(width - Len(text)) & text
End Function

Function First(text As String) As String
  First = text & Space(18 - Len(text))
End Function

' A cell of a table; what does not exist is a dash.
Function Show(value As Double) As String
  If value <= MISSING Then
    Show = Padded("-", 14)
  Else
    Show = Padded(Format(value, "0.000000"), 14)
  End If
End Function

Function Whole(value As Double) As String
  Whole = Format(value, "0")
End Function

Sub Heading(text As String, names As Variant)
  Dim textLine As String, i As Long
  textLine = First(text)
  For i = 0 To UBound(names)
    textLine = textLine & Padded(names(i), 14)
  Next i
  Print #report, textLine
End Sub

' `count` cells of row i from column `start` on.
Sub RowOf(text As String, a As Variant, rows As Long, i As Long, start As Long, count As Long)
  Dim textLine As String, j As Long
  textLine = First(text)
  For j = start To start + count - 1
    textLine = textLine & Show(At(a, rows, i, j))
  Next j
  Print #report, textLine
End Sub

' ---- Kaplan-Meier ----

Sub KaplanMeier()
  Dim times As Variant, status As Variant, weight As Variant, stratum As Variant
  Dim sizes As Variant, grid As Variant, table As Variant, results As Variant
  Dim a As Variant, n As Long, nTimes As Long, m As Long, rows As Long, offset As Long
  Dim code As Long, i As Long, s As Long
  Dim sexes As Variant, tests As Variant
  sexes = Array("female", "male")
  tests = Array("log-rank", "Gehan-Breslow", "Tarone-Ware")
  n = nData
  times = Reals(n) : status = Reals(n) : weight = Reals(n) : stratum = Reals(n)
  sizes = Reals(2)
  For i = 0 To n - 1
    times(i) = dataTime(i)
    status(i) = dataStatus(i)
    weight(i) = 1
    stratum(i) = 1 + dataMale(i)
    sizes(dataMale(i)) = sizes(dataMale(i)) + 1
  Next i

  ' Sorts the four columns together, by stratum and by time.
  a = Array(times, Array(n), status, weight, stratum, sizes, 2, NO, Reals(1))
  code = CallLibrary("ReorganizeData", a)
  If code = -1 Or code = -2 Then    ' the other codes are soft
    Print #report, "refused with code " & code
    Exit Sub
  End If
  times = a(0) : status = a(2) : weight = a(3)
  Print #report, "Survival by sex: " & n & " patients, code " & code & ", last time " & Whole(a(8)(0))

  ' The distinct times of both sexes, into row 1 of the grid, which has n columns.
  a = Array(Array(n), n, 2, times, Reals(7 * n))
  CallLibrary("LoadKaplanTest", a)
  nTimes = a(0)(0)
  grid = a(4)

  offset = 0
  For s = 1 To 2
    m = sizes(s - 1)
    a = Array(n, s, Array(offset), 0, 0, n, 2, m, 1, 0, 0, times, status, weight, NO, YES, NO, NO, _
        Reals(1), Reals((m + 1) * 2), Reals(1), Reals((m + 2) * 12), Array(0), grid)
    CallLibrary("RunLife", a)
    table = a(21)
    rows = a(22)(0)
    grid = a(23)
    Print #report, ""
    Print #report, sexes(s - 1) & ": " & m & " patients, " & rows & " times"
    ShowCurve(table, m, rows)
    ShowSummary(table, m, rows)
    offset = offset + m
  Next s

  a = Array(grid, nTimes, n, 2, ALPHA, Reals(12))
  CallLibrary("ComputeLifeTests", a)
  results = a(5)
  Print #report, ""
  Print #report, "Comparison over " & nTimes & " times"
  Heading("", Array("chi-square", "critical", "p-value"))
  For i = 1 To 3
    RowOf(tests(i - 1), results, 3, i, 1, 3)
  Next i
End Sub

' The curve of one sex: a line for each distinct time.
Sub ShowCurve(table As Variant, m As Long, rows As Long)
  Dim i As Long, j As Long, survival As Double, textLine As String
  Heading("time", Array("at risk", "deaths", "censored", "survival", "std error"))
  For i = 2 To rows + 1    ' row 1 is the origin
    survival = At(table, m + 2, i, 8)
    textLine = First(Whole(At(table, m + 2, i, 1)))
    For j = 3 To 5
      textLine = textLine & Padded(Whole(At(table, m + 2, i, j)), 14)
    Next j
    ' Column 11 is Greenwood's sum.
    Print #report, textLine & Show(survival) & Show(survival * Sqr(At(table, m + 2, i, 11)))
  Next i
End Sub

Sub ShowSummary(table As Variant, m As Long, rows As Long)
  Dim a As Variant, quarters As Variant, i As Long, textLine As String
  quarters = Array("survival 0.25", "survival 0.50", "survival 0.75")
  a = Array(table, m, ALPHA, m, rows, Reals(1), Reals(4), Reals(12))
  CallLibrary("ComputeKaplanMeanMedian", a)
  Heading("falls to", Array("time", "lower", "upper"))
  For i = 1 To 3
    RowOf(quarters(i - 1), a(7), 3, i, 2, 3)
  Next i
  Heading("", Array("mean", "std error", "lower", "upper", "cut"))
  textLine = First("restricted")
  For i = 0 To 3
    textLine = textLine & Show(a(6)(i))
  Next i
  Print #report, textLine & Show(a(5)(0))
End Sub

' ---- Cox regression ----

Sub Cox()
  Dim times As Variant, status As Variant, covariates As Variant, tieKey As Variant
  Dim stratum As Variant, a As Variant, names As Variant, labels As Variant
  Dim n As Long, i As Long, j As Long, row As Long, groups As Long, code As Long
  Dim inModel As Long, iterations As Long, mean As Double, value As Double
  names = Array("age", "male", "ph.ecog")

  ' Complete rows only, the covariates centred: far from 0 their risk sums over- or underflow.
  n = 0
  For i = 0 To nData - 1
    If dataAge(i) > MISSING And dataScore(i) > MISSING Then n = n + 1
  Next i
  times = Reals(n) : status = Reals(n) : tieKey = Reals(n) : stratum = Reals(n)
  covariates = Reals(3 * n)
  For j = 0 To 2
    mean = 0
    row = 0
    For i = 0 To nData - 1
      If dataAge(i) > MISSING And dataScore(i) > MISSING Then
        times(row) = dataTime(i)
        status(row) = dataStatus(i)
        tieKey(row) = 1
        stratum(row) = 1
        value = Choose(j + 1, dataAge(i), dataMale(i), dataScore(i))
        covariates(row + j * n) = value
        mean = mean + value / n
        row = row + 1
      End If
    Next i
    For i = 0 To n - 1
      covariates(i + j * n) = covariates(i + j * n) - mean
    Next i
  Next j

  a = Array(times, n, 3, status, Reals(n), tieKey, covariates, stratum, Array(n), 1, _
      Array(0), Array(0), Integers(n), Integers(n), Integers(n), Array(0))
  code = CallLibrary("Cpp_ReorganizeDataCox", a)
  If code <> 0 Then
    Print #report, "refused with code " & code
    Exit Sub
  End If
  groups = a(15)(0)

  ' With one stratum the first `groups` elements are the tables cut to their columns. Baseline and
  ' residuals (arguments 32 to 34) are not asked for: an array of one element, which becomes 0, is
  ' enough.
  a = Array(a(0), n, 3, Array(0), a(3), 0, a(6), 0, a(8), 1, Array(50), 1E-9, 0, a(10), a(13), _
      a(14), a(11), a(12), -1, 0, 0.05, 0.1, ALPHA, groups, NO, 0, 0, 0, Reals(3), Reals(12), _
      Reals(9), Reals(27), Array(1), Array(1), Array(1), Reals(9), Array(0), Integers(3))
  CallLibrary("RunCoxReg", a)
  inModel = a(3)(0)
  iterations = a(10)(0)

  Print #report, ""
  Print #report, "Cox regression: " & n & " patients, " & a(16)(0) & " censored, " & a(13)(0) & _
      " distinct times, " & iterations & " iterations"
  Heading("", Array("coefficient", "std error", "chi-square", "p-value", "hazard ratio", _
      "lower", "upper"))
  For j = 1 To inModel
    RowOf(names(j - 1), a(31), 3, j, 1, 7)
  Next j
  labels = Array("events", "covariates", "-2 log L", "AIC", "SBC")
  Heading("model", Array("without", "fitted"))
  For i = 1 To 5
    RowOf(labels(i - 1), a(29), 6, i, 1, 2)
  Next i
  labels = Array("likelihood ratio", "score", "Wald")
  Heading("", Array("df", "chi-square", "p-value"))
  For i = 1 To 3
    RowOf(labels(i - 1), a(30), 3, i, 1, 3)
  Next i
  Print #report, "not asked for: " & Whole(a(32)(0)) & " " & Whole(a(33)(0)) & " " & Whole(a(34)(0))
End Sub
