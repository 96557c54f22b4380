# Builds the program and its tests on Windows with MSYS2's UCRT64 compiler and runs them; then whole runs of the
# program on made folders. The last line says how many tests passed and failed, the exit code whether any did.
#   powershell -ExecutionPolicy Bypass -File scripts\windows_test.ps1 [-GoogleTest FOLDER] [-Msys FOLDER]
# GoogleTest is the folder with the sources of GoogleTest. Settings of a Vardeko in use are moved aside meanwhile, and
# the places of its windows are put back at the end.
# As an administrator it also makes a share of this computer; without these rights that is skipped.
# Plain ASCII, and nothing that Windows PowerShell 5.1 does not know.
param(
    [string]$GoogleTest = 'build\googletest',
    [string]$Msys = 'C:\msys64'
)
Set-StrictMode -Version 2
$ErrorActionPreference = 'Stop'
Set-Location (Join-Path $PSScriptRoot '..')

$script:passed = 0
$script:failed = 0
$settings = Join-Path $env:ProgramData 'Vardeko'
$settingsAside = "$settings before the test"
$work = Join-Path $env:TEMP "vardeko-test-$PID"
$shareName = "vardekotest$PID"
$places = 'HKEY_CURRENT_USER\Software\Quentar\Vardeko\GUI'
$share = $null
$drives = @()

function Build {
    if (-not (Test-Path "$GoogleTest\CMakeLists.txt")) {
        throw "The sources of GoogleTest are not in $GoogleTest; -GoogleTest names their folder."
    }
    $sources = (Resolve-Path $GoogleTest).Path.Replace('\', '/')
    & cmake -S . -B build/windows-test -G Ninja -DCMAKE_BUILD_TYPE=Release -DVARDEKO_TESTS=ON `
        "-DVARDEKO_GOOGLETEST=$sources"
    if ($LASTEXITCODE -ne 0) { throw 'CMake found something missing.' }
    & cmake --build build/windows-test
    if ($LASTEXITCODE -ne 0) { throw 'The program does not build.' }
}

function Run-TestPrograms {
    $programs = @(Get-ChildItem 'build\windows-test\bin\*_test.exe')
    if ($programs.Count -eq 0) { throw 'There are no test programs.' }
    foreach ($program in $programs) {
        Write-Host "-- $($program.Name)"
        $lines = @(& $program.FullName)
        $code = $LASTEXITCODE
        $good = @($lines -match '^\[       OK \]').Count
        $bad = @($lines -match '^\[  FAILED  \] .*\(\d+ ms\)').Count
        if ($code -ne 0) {
            $lines | Write-Host
            if ($bad -eq 0) { $bad = 1 }
        }
        Write-Host "   $good passed, $bad failed, exit code $code"
        $script:passed += $good
        $script:failed += $bad
    }
}

function Make-File([string]$path, [string]$content) {
    $null = [IO.Directory]::CreateDirectory([IO.Path]::GetDirectoryName($path))
    [IO.File]::WriteAllText($path, $content)
}

function Get-FreeDrive {
    foreach ($letter in 'QRSTUVWP'.ToCharArray()) {
        if (-not (Test-Path "${letter}:\")) { return [string]$letter }
    }
    throw 'There is no free drive letter.'
}

function Mount-Folder([string]$folder) {
    $letter = Get-FreeDrive
    & subst "${letter}:" $folder | Out-Null
    if ($LASTEXITCODE -ne 0) { throw "subst ${letter}: failed" }
    $script:drives += $letter
    return $letter
}

# The program's two files, as docs/file-formats.md describes them.
function Write-Settings([string]$destination, [string]$sourceFolder) {
    $null = [IO.Directory]::CreateDirectory($settings)
    $latin = [Text.Encoding]::GetEncoding(1252)
    [IO.File]::WriteAllText("$settings\NASConf.ini", "[CONFIG]`r`nNASDIR=$destination`r`nCONNECT=0`r`n", $latin)
    $stream = New-Object IO.MemoryStream
    $writer = New-Object IO.BinaryWriter($stream)
    $writer.Write($latin.GetBytes('Ver'))
    $writer.Write([double]1.91)
    $writer.Write([int]7)
    $fields = @(@('Aktive', 5, 2), @('Directory', 1, 255), @('Rekursiv', 5, 2), @('Extensions', 1, 255),
        @('ExtensionMode', 1, 5), @('History', 5, 2), @('Hidden', 5, 2))
    foreach ($field in $fields) {
        $writer.Write([int]$field[2])
        $writer.Write([int16]$field[1])
        $writer.Write([int16]($field[0].Length + 1))
        $writer.Write($latin.GetBytes($field[0]))
        $writer.Write([byte]0)
    }
    foreach ($value in @($true, $sourceFolder, $true, '', 'NO', $false, $false)) {
        $writer.Write([byte]1)
        if ($value -is [string]) {
            $writer.Write([int]$latin.GetByteCount($value))
            $writer.Write($latin.GetBytes($value))
        } else {
            $writer.Write([uint16][int]$value)
        }
    }
    $writer.Flush()
    [IO.File]::WriteAllBytes("$settings\NASConf.Dat", $stream.ToArray())
}

function Start-Program {
    $process = Start-Process 'build\windows-test\bin\Vardeko.exe' -ArgumentList '/COPY' -PassThru
    $null = $process.Handle  # without it the exit code is lost
    return $process
}

function Run-Program([int]$expected) {
    $process = Start-Program
    if (-not $process.WaitForExit(120000)) {
        $process.Kill()
        throw 'The program did not end within two minutes.'
    }
    if ($process.ExitCode -ne $expected) { throw "exit code $($process.ExitCode) instead of $expected" }
}

function Get-CopyFolder {
    $hosts = @(Get-ChildItem $nas -Directory)
    if ($hosts.Count -ne 1) { throw "$($hosts.Count) folders in the destination" }
    return Join-Path $hosts[0].FullName "drive_$sourceDrive\Daten"
}

function Assert-BackedUp {
    $copies = Get-CopyFolder
    foreach ($file in Get-ChildItem $source -Recurse -File -Force) {
        $copy = $copies + $file.FullName.Substring($source.Length)
        if (-not (Test-Path -LiteralPath $copy)) { throw "the copy of $($file.FullName) is missing" }
        if ((Get-FileHash -LiteralPath $copy).Hash -ne (Get-FileHash -LiteralPath $file.FullName).Hash) {
            throw "the copy of $($file.FullName) has other bytes"
        }
        if ((Get-Item -LiteralPath $copy -Force).LastWriteTimeUtc -ne $file.LastWriteTimeUtc) {
            throw "the copy of $($file.FullName) has another date"
        }
    }
}

function Get-Snapshot {
    $files = Get-ChildItem (Get-CopyFolder) -Recurse -File -Force
    return @($files | ForEach-Object { "$($_.FullName) $($_.LastWriteTimeUtc.Ticks) $($_.CreationTimeUtc.Ticks)" }) -join "`n"
}

# What is in it; the folder itself may be a drive or a share. rmdir does not follow a junction.
function Clear-Folder([string]$folder) {
    $null = [IO.Directory]::CreateDirectory($folder)
    foreach ($item in Get-ChildItem -LiteralPath $folder -Force) {
        if ($item.PSIsContainer) {
            & cmd /c rmdir /s /q $item.FullName
        } else {
            Remove-Item -LiteralPath $item.FullName -Force
        }
    }
}

# One case: a source and a destination of its own; the destination is a drive, or what -Destination names.
function Case([string]$name, [scriptblock]$what, [string]$destination = "${nasDrive}:") {
    Write-Host "[ RUN      ] WholeRun.$name"
    try {
        foreach ($folder in @($source, $nas, $settings)) { Clear-Folder $folder }
        foreach ($number in 1..20) { Make-File "$source\Briefe\Brief $number.txt" "letter $number" }
        Make-File "$source\$([char]0xDC)bersicht $([char]0x4E2D).txt" 'letters of other alphabets'
        Make-File "$source\leer.txt" ''
        Write-Settings $destination "${sourceDrive}:\Daten"
        & $what
        Write-Host "[       OK ] WholeRun.$name"
        $script:passed++
    } catch {
        Write-Host "$_"
        Write-Host "[  FAILED  ] WholeRun.$name"
        $script:failed++
    }
}

function Run-WholeRuns {
    Case 'ATreeIsCopiedOnce' {
        Run-Program 0
        Assert-BackedUp
        $before = Get-Snapshot
        Run-Program 0
        if ((Get-Snapshot) -ne $before) { throw 'the second run copied something' }
    }
    Case 'AChangeReplacesAReadOnlyCopy' {
        Run-Program 0
        $copy = Join-Path (Get-CopyFolder) 'Briefe\Brief 7.txt'
        (Get-Item $copy).IsReadOnly = $true
        Start-Sleep -Seconds 2
        Make-File "$source\Briefe\Brief 7.txt" 'changed'
        Run-Program 0
        Assert-BackedUp
    }
    Case 'ASourceHeldOpenFailsAlone' {
        $held = [IO.File]::Open("$source\Briefe\Brief 7.txt", 'Open', 'ReadWrite', 'None')
        try { Run-Program 1 } finally { $held.Close() }
        if (-not (Test-Path (Join-Path (Get-CopyFolder) 'Briefe\Brief 8.txt'))) { throw 'the others are missing, too' }
        Run-Program 0
        Assert-BackedUp
    }
    Case 'ACopyHeldOpenStays' {
        Run-Program 0
        Start-Sleep -Seconds 2
        Make-File "$source\Briefe\Brief 7.txt" 'changed'
        $held = [IO.File]::Open((Join-Path (Get-CopyFolder) 'Briefe\Brief 7.txt'), 'Open', 'Read', 'Read')
        try { Run-Program 1 } finally { $held.Close() }
        Run-Program 0
        Assert-BackedUp
    }
    Case 'AKillInMidRunIsRepaired' {
        foreach ($number in 1..2000) { Make-File "$source\viele\$number.txt" "$number" }
        $process = Start-Program
        $some = Join-Path $nas "$env:COMPUTERNAME\drive_$sourceDrive\Daten\viele\*.txt"
        foreach ($attempt in 1..600) {
            if ((Test-Path $some) -or $process.HasExited) { break }
            Start-Sleep -Milliseconds 50
        }
        if (-not (Test-Path $some)) { throw 'nothing was copied within half a minute' }
        if ($process.HasExited) { throw 'the run was over before it could be killed' }
        $process.Kill()
        $process.WaitForExit()
        Run-Program 0
        Assert-BackedUp
    }
    Case 'AJunctionThatLeadsBackEnds' {
        & cmd /c mklink /J "$source\Briefe\back" $source | Out-Null
        Run-Program 0
        if (Test-Path (Join-Path (Get-CopyFolder) 'Briefe\back\Briefe\back')) { throw 'it went in a circle' }
        & cmd /c rmdir "$source\Briefe\back"
        Assert-BackedUp
    }
    if ($share) {
        Case 'AShareIsADestination' { Run-Program 0; Assert-BackedUp } $share
    } else {
        Write-Host "[  SKIPPED ] WholeRun.AShareIsADestination: a share takes an administrator's rights to make"
    }
}

# The compiler, CMake and Ninja of UCRT64 before any others.
$env:PATH = "$Msys\ucrt64\bin;$env:PATH"
if ((Get-TimeZone).Id -ne 'W. Europe Standard Time') {
    Write-Host "Tests of dates expect the time zone 'W. Europe Standard Time'; this computer has '$((Get-TimeZone).Id)'."
}
if (Get-Process Vardeko -ErrorAction SilentlyContinue) { throw 'Vardeko is running; please close it first.' }
if (Test-Path $settingsAside) { throw "An earlier test left your settings in '$settingsAside'; please move them back." }
Build
$null = New-Item -ItemType Directory "$work\source\Daten", "$work\nas", "$work\share"
if (Test-Path $settings) { Rename-Item $settings (Split-Path $settingsAside -Leaf) }
$hadPlaces = Test-Path "Registry::$places"
if ($hadPlaces) { & reg export $places "$work\places.reg" /y | Out-Null }
try {
    $sourceDrive = Mount-Folder "$work\source"
    $nasDrive = Mount-Folder "$work\nas"
    # As the listings spell them: TEMP may be a short name.
    $source = (Get-Item "$work\source\Daten").FullName
    $nas = (Get-Item "$work\nas").FullName
    try {
        $me = [Security.Principal.WindowsIdentity]::GetCurrent().Name
        $null = New-SmbShare -Name $shareName -Path $nas -FullAccess $me -ErrorAction Stop
        $share = "\\localhost\$shareName"
        $env:VARDEKO_TEST_SHARE = $share
    } catch {
        Write-Host "No share could be made: $_"
    }
    Run-TestPrograms
    Run-WholeRuns
} finally {
    if ($share) { Remove-SmbShare -Name $shareName -Force }
    foreach ($letter in $drives) { & subst "${letter}:" /D }
    if (Test-Path $settings) { Remove-Item $settings -Recurse -Force }
    if (Test-Path $settingsAside) { Rename-Item $settingsAside (Split-Path $settings -Leaf) }
    if (Test-Path "Registry::$places") { & reg delete $places /f | Out-Null }
    # It tells its success on the error stream, which Windows PowerShell takes for a mistake where it is caught.
    if ($hadPlaces) { & cmd /c "reg import ""$work\places.reg"" >nul 2>&1" }
    & cmd /c rmdir /s /q $work
}
Write-Host "$script:passed passed, $script:failed failed"
if ($script:failed -gt 0) { exit 1 }
exit 0
